#include <cstdio>
#include <cstring>

#include <ZuUtils.h>

int main() {
  const CZuError r = FXErrorUtil::ErrorInt(FXCodeLocation(__FILE__, "consumer::main", 1), 7);
  const std::string text = r.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE);
  std::printf("%s\n", text.c_str());
  return text == "Error (Int.7.0x7)" && !CZuError::Success() ? 0 : 1;
}
