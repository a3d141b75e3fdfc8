// CZuError: the result of every fallible operation, returned by value.
//
// A 32-bit code in HRESULT layout (failure exactly when negative) and an
// optional chain of error items, newest first, shared between copies. The
// success value is a code word and an empty pointer: creating, copying,
// returning and testing it never allocates.
#pragma once

#include <string>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/CodeLocation.h"
#include "errors/ErrorItem.h"
#include "errors/ErrorOutputFormat.h"
#include "platform/ZuTypes.h"

class FXErrorPrivate;

class ZUUTILS_API CZuError {
 public:
  static CZuError Success() { return CZuError(); }

  // Sets the code and starts a fresh chain holding the item. A null item
  // (its allocation failed in a builder) leaves the chain empty.
  CZuError(HRESULT code, boost::shared_ptr<FXErrorItem> item);

  CZuError(const CZuError&) = default;
  CZuError(CZuError&&) noexcept = default;
  CZuError& operator=(const CZuError&) = default;
  CZuError& operator=(CZuError&&) noexcept = default;
  ~CZuError() = default;

  // Same code, and a chain of its own holding a copy of every item.
  CZuError Copy() const;

  bool IsError() const { return m_code < 0; }
  // True on success: callers write `if (!result)` for the success path.
  bool operator!() const { return m_code >= 0; }
  HRESULT GetErrorCode() const { return m_code; }

  // Same code, or codes the equivalence table lists together.
  bool Is(HRESULT value) const;
  bool IsNot(HRESULT value) const { return !Is(value); }

  // Adds at the front of the chain; the code never changes.
  CZuError& Push(boost::shared_ptr<FXErrorItem> item);
  CZuError& Push(const FXCodeLocation& location);
  // A description item with the printf-style expansion; a null or empty
  // format pushes the plain location.
  CZuError& Push(const FXCodeLocation& location, const char* format, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 3, 4)))
#endif
      ;

  // Append a parameter to the newest item; no-op without a chain. A null
  // character pointer is stored as an empty string.
  CZuError& operator<<(const boost::any& value);
  CZuError& operator<<(const char* value);
  CZuError& operator<<(const wchar_t* value);

  std::string AsString() const;
  std::string AsString(EErrorOutputFormat format) const;

 protected:
  CZuError() = default;

 private:
  friend class CZuErrorBroker;
  FXErrorItem* Newest() const;

  HRESULT m_code = 0;
  boost::shared_ptr<FXErrorPrivate> m_chain;
};

class ZUUTILS_API CZuErrorBroker {
 public:
  // The root cause's (oldest item's) parameters, or a shared empty array.
  static const FXErrorItem::Parameters& GetParameters(const CZuError& result);
};
