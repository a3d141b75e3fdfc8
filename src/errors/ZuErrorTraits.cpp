#include "errors/ZuErrorTraits.h"

ZuErrorTraits::~ZuErrorTraits() = default;

bool ZuErrorTraits::isCritical() { return false; }
bool ZuErrorTraits::isMajor() { return false; }
bool ZuErrorTraits::isMinor() { return false; }
bool ZuErrorTraits::isInformational() { return false; }
bool ZuErrorTraits::isOSError() { return false; }
unsigned ZuErrorTraits::errorID() { return 0; }
int ZuErrorTraits::severity() { return 0; }

void ZuErrorTraits::clear(DWORD) {}
void ZuErrorTraits::setCritical(DWORD) {}
void ZuErrorTraits::setMajor(DWORD) {}
void ZuErrorTraits::setMinor(DWORD) {}
void ZuErrorTraits::setInformational(DWORD) {}
void ZuErrorTraits::setOSCritical(DWORD) {}
void ZuErrorTraits::setOSMajor(DWORD) {}
void ZuErrorTraits::setOSMinor(DWORD) {}

std::string ZuErrorTraits::textMessage() { return std::string(); }

void ZuErrorTraits::setFileNotFoundError(const std::string&, int) {}
void ZuErrorTraits::setInsufficientMemoryError(int) {}
void ZuErrorTraits::setInvalidArgumentError(int) {}
void ZuErrorTraits::setTextError(unsigned, const std::string&, const std::string&, int) {}
