// ZuUtils: every public header of the library.
#pragma once

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"

#include "errors/CodeLocation.h"
#include "errors/ErrorItem.h"
#include "errors/ErrorOutputFormat.h"
#include "errors/ErrorUtil.h"
#include "errors/ZuError.h"

#include "logging/LogHook.h"

#include "text/EnumWrapper.h"
#include "text/StringAlgo.h"
#include "text/StringFormat.h"
#include "text/StringConvert.h"
#include "text/UTF.h"
#include "text/UTFOSAPI.h"
#include "text/ZuString.h"
