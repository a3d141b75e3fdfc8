#include "platform/InitLock.h"

namespace FXPlatform {

std::mutex& InitLock() {
  static std::mutex lock;
  return lock;
}

}  // namespace FXPlatform
