#include "errors/ErrorOutputFormat.h"

const TEnumName<EErrorOutputFormat::ENUM>* EErrorOutputFormat::DisplayTable(std::size_t& count) {
  static const TEnumName<ENUM> kNames[] = {
      ZU_ENUM_NAME(LOGGING_FULL),
      ZU_ENUM_NAME(USER_SINGLE_LINE_CODE),
      ZU_ENUM_NAME(USER_SINGLE_LINE_DESCRIPTION_CODE),
  };
  count = sizeof kNames / sizeof kNames[0];
  return kNames;
}
