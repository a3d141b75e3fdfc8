// The items of a result's chain: where an error was seen, optional
// parameters, and by the concrete class the error domain and its code.
#pragma once

#include <string>
#include <vector>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/CodeLocation.h"
#include "errors/ErrorOutputFormat.h"
#include "platform/ZuTypes.h"

class ZUUTILS_API FXErrorItem {
 public:
  typedef std::vector<boost::any> Parameters;

  explicit FXErrorItem(const FXCodeLocation& location) : m_location(location) {}
  FXErrorItem(const FXErrorItem&) = default;
  FXErrorItem& operator=(const FXErrorItem&) = default;

  virtual ~FXErrorItem();
  // The location text; empty for USER_SINGLE_LINE_CODE.
  virtual std::string AsString(EErrorOutputFormat format) const;
  virtual std::string AsString() const;
  virtual boost::shared_ptr<FXErrorItem> Copy() const;

  // Appends a copy of the value; an empty any appends an empty element.
  FXErrorItem& operator<<(const boost::any& value) {
    m_parameters.push_back(value);
    return *this;
  }

  const FXCodeLocation& GetLocation() const { return m_location; }
  const Parameters& GetParameters() const { return m_parameters; }
  Parameters& GetParameters() { return m_parameters; }

 protected:
  FXCodeLocation m_location;
  Parameters m_parameters;
};

class ZUUTILS_API FXErrorItemDescription : public FXErrorItem {
 public:
  FXErrorItemDescription(const FXCodeLocation& location, std::string description)
      : FXErrorItem(location), m_description(std::move(description)) {}

  ~FXErrorItemDescription() override;
  using FXErrorItem::AsString;
  // "location/description"
  std::string AsString() const override;
  boost::shared_ptr<FXErrorItem> Copy() const override;

  const std::string& GetDescription() const { return m_description; }

 protected:
  std::string m_description;
};

// Every error domain once: its name, the type of its code (unsigned for
// Win32, signed 32-bit otherwise), whether FXErrorUtil offers a Push with a
// description (Http does not) and whether the code can be read back from a
// result (HResult cannot). The item classes, the builders and the domain
// enumeration of the texts are all generated from this one list.
#define ZU_ERROR_DOMAINS(X)                                  \
  X(Win32, DWORD, ZU_PUSH_FORMAT, ZU_READ_BACK)             \
  X(HResult, HRESULT, ZU_PUSH_FORMAT, ZU_NO_READ_BACK)      \
  X(ErrNo, int, ZU_PUSH_FORMAT, ZU_READ_BACK)               \
  X(Http, int, ZU_NO_PUSH_FORMAT, ZU_READ_BACK)             \
  X(Int, int, ZU_PUSH_FORMAT, ZU_READ_BACK)                 \
  X(SQLite, int, ZU_PUSH_FORMAT, ZU_READ_BACK)              \
  X(TQResult, int, ZU_PUSH_FORMAT, ZU_READ_BACK)            \
  X(EventMessage, int, ZU_PUSH_FORMAT, ZU_READ_BACK)

// Each domain has an item class holding the domain's code and a
// Description subclass adding the caller's text; ErrorItem.cpp defines them.
#define ZU_DECLARE_ERROR_DOMAIN_ITEMS(Domain, ValueType, PushFormat, ReadBack)             \
  class ZUUTILS_API FXErrorItem##Domain : public FXErrorItem {                             \
   public:                                                                                 \
    typedef ValueType value_type;                                                          \
    FXErrorItem##Domain(const FXCodeLocation& location, ValueType value)                   \
        : FXErrorItem(location), m_value(value) {}                                         \
    ~FXErrorItem##Domain() override;                                                       \
    std::string AsString(EErrorOutputFormat format) const override;                        \
    std::string AsString() const override;                                                 \
    boost::shared_ptr<FXErrorItem> Copy() const override;                                  \
    ValueType GetValue() const { return m_value; }                                         \
                                                                                           \
   protected:                                                                              \
    ValueType m_value;                                                                     \
  };                                                                                       \
  class ZUUTILS_API FXErrorItem##Domain##Description : public FXErrorItem##Domain {        \
   public:                                                                                 \
    FXErrorItem##Domain##Description(const FXCodeLocation& location, ValueType value,      \
                                     std::string description)                              \
        : FXErrorItem##Domain(location, value), m_description(std::move(description)) {}   \
    ~FXErrorItem##Domain##Description() override;                                          \
    std::string AsString(EErrorOutputFormat format) const override;                        \
    std::string AsString() const override;                                                 \
    boost::shared_ptr<FXErrorItem> Copy() const override;                                  \
    const std::string& GetDescription() const { return m_description; }                   \
                                                                                           \
   protected:                                                                              \
    std::string m_description;                                                             \
  };

ZU_ERROR_DOMAINS(ZU_DECLARE_ERROR_DOMAIN_ITEMS)

#undef ZU_DECLARE_ERROR_DOMAIN_ITEMS
