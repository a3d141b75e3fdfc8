#include "platform/SystemError.h"

#include "errors/ErrorUtil.h"

namespace FXPlatform {

CZuError ErrorFromSystem(const FXCodeLocation& location, const TSystemError& error) {
  CZuError result = FXErrorUtil::ErrorWin32(location, error.win32);
  if (error.crtErrno >= 0) FXErrorUtil::PushErrNo(result, location, error.crtErrno);
  return result;
}

}  // namespace FXPlatform
