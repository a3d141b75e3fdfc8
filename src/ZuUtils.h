// ZuUtils: every public header of the library.
#pragma once

#include "ZuUtilsExport.h"
#include "platform/TimeTypes.h"
#include "platform/ZuTypes.h"

#include "errors/CodeLocation.h"
#include "errors/ErrorItem.h"
#include "errors/ErrorOutputFormat.h"
#include "errors/ErrorUtil.h"
#include "errors/Misc.h"
#include "errors/Win32Error.h"
#include "errors/ZuError.h"
#include "errors/ZuErrorTraits.h"
#include "errors/ZuException.h"

#include "logging/LineWriter.h"
#include "logging/LogHook.h"
#include "logging/LogWriterInterface.h"
#include "logging/ZuLogger.h"

#include "text/Ascii85.h"
#include "text/EnumWrapper.h"
#include "text/Md5.h"
#include "text/StringAlgo.h"
#include "text/StringConvert.h"
#include "text/StringFormat.h"
#include "text/UTF.h"
#include "text/UTFOSAPI.h"
#include "text/ZuBase64.h"
#include "text/ZuCRC32.h"
#include "text/ZuCRC64.h"
#include "text/ZuString.h"

#include "time/TimeStamp.h"

#include "threads/AlertableEventThread.h"
#include "threads/Event.h"
#include "paths/Path.h"
#include "paths/SimpleFolderIterator.h"
#include "paths/TraverseFolder.h"
