// How much of a result's text to show: everything (logs) or one line (users).
#pragma once

#include "ZuUtilsExport.h"
#include "text/EnumWrapper.h"

struct EErrorOutputFormatValues {
  enum ENUM : int {
    LOGGING_FULL = 0,                       // code, every item, locations
    USER_SINGLE_LINE_CODE = 1,              // the root cause's code text only
    USER_SINGLE_LINE_DESCRIPTION_CODE = 2,  // code text and the caller's description
  };
};

class ZUUTILS_API EErrorOutputFormat
    : public EErrorOutputFormatValues,
      public TEnumWrapper<EErrorOutputFormat, EErrorOutputFormatValues::ENUM> {
 public:
  using TEnumWrapper::TEnumWrapper;
  static const TEnumName<ENUM>* DisplayTable(std::size_t& count);
};
