// Item construction for the builders: an allocation failure yields an empty
// pointer instead of an exception, so building an error never throws.
#pragma once

#include <cstdarg>
#include <new>
#include <string>
#include <utility>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "errors/ErrorItem.h"

namespace FXErrorDetail {

template <class Item, class... Args>
boost::shared_ptr<FXErrorItem> MakeItem(Args&&... args) noexcept {
  try {
    return boost::make_shared<Item>(std::forward<Args>(args)...);
  } catch (const std::bad_alloc&) {
    return boost::shared_ptr<FXErrorItem>();
  }
}

// The printf-style expansion of a description; text that overflowed the
// formatter is kept behind "[BUFFEROVERFLOW] ".
std::string ExpandDescription(const char* format, va_list args);

// The plain item for a null or empty format, else the description item;
// `value` is the domain code, absent for the location-only items.
template <class Item, class DescriptionItem, class... Value>
boost::shared_ptr<FXErrorItem> MakeDescribedItem(const FXCodeLocation& location, const char* format,
                                                 va_list args, Value... value) noexcept {
  if (format == nullptr || *format == '\0') return MakeItem<Item>(location, value...);
  try {
    return MakeItem<DescriptionItem>(location, value..., ExpandDescription(format, args));
  } catch (const std::bad_alloc&) {
    return boost::shared_ptr<FXErrorItem>();
  }
}

}  // namespace FXErrorDetail
