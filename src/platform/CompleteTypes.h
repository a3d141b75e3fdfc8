// The complete Windows records that platform/ZuTypes.h only names on
// Windows (GUID, LUID, FILETIME), for library sources that read their
// fields. Internal: public headers keep <windows.h> out of their users.
#pragma once

#include "platform/ZuTypes.h"

#ifdef _WIN32
#include <windows.h>
#endif
