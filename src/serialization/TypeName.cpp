#include "serialization/TypeName.h"

#include <cstdlib>
#include <memory>

#if __has_include(<cxxabi.h>)
#include <cxxabi.h>
#define ZU_HAVE_CXXABI 1
#endif

namespace FXTypeName {

namespace {

void ErasePrefixes(std::string& name) {
  static const char* const kPrefixes[] = {"class ", "struct ", "enum "};
  for (const char* prefix : kPrefixes) {
    const std::string text(prefix);
    for (std::size_t at = name.find(text); at != std::string::npos; at = name.find(text, at)) {
      const char before = at == 0 ? ' ' : name[at - 1];
      const bool word = (before >= 'a' && before <= 'z') || (before >= 'A' && before <= 'Z') ||
                        (before >= '0' && before <= '9') || before == '_';
      if (word)
        ++at;
      else
        name.erase(at, text.size());
    }
  }
}

}  // namespace

std::string Of(const std::type_info& type) {
  std::string name;
#ifdef ZU_HAVE_CXXABI
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> demangled(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                   std::free);
  name = status == 0 && demangled ? demangled.get() : type.name();
#else
  name = type.name();
#endif
  ErasePrefixes(name);
  return name;
}

}  // namespace FXTypeName
