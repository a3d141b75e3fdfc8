// Run-time type names as the C++ ABI demangles them, the same text on
// every build. Internal to the library.
#pragma once

#include <string>
#include <typeinfo>

namespace FXTypeName {

// "long", "CZuError", "boost::shared_ptr<CBagProvider>"; "void" for the
// type of an empty boost::any. Without a demangler (or when it fails) the
// compiler's own name, less any "class " or "struct " prefix.
std::string Of(const std::type_info& type);

}  // namespace FXTypeName
