// A library under the message library's name that lacks its export.
extern "C" int NotTheMessageExport() { return 0; }
