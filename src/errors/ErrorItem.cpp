#include "errors/ErrorItem.h"

#include <boost/make_shared.hpp>

#include "errors/ErrorText.h"

FXErrorItem::~FXErrorItem() = default;

std::string FXErrorItem::AsString(EErrorOutputFormat format) const {
  if (format == EErrorOutputFormat::USER_SINGLE_LINE_CODE) return std::string();
  return AsString();
}

std::string FXErrorItem::AsString() const { return m_location.AsString(); }

boost::shared_ptr<FXErrorItem> FXErrorItem::Copy() const { return boost::make_shared<FXErrorItem>(*this); }

FXErrorItemDescription::~FXErrorItemDescription() = default;

std::string FXErrorItemDescription::AsString() const {
  return m_location.AsString() + "/" + m_description;
}

boost::shared_ptr<FXErrorItem> FXErrorItemDescription::Copy() const {
  return boost::make_shared<FXErrorItemDescription>(*this);
}

// The plain item shows its domain's one line for the user formats (Int and
// TQResult only for the code format) and its full text otherwise. The
// description item adds the caller's text: after a "-" in the full text, and
// inside the one line of USER_SINGLE_LINE_DESCRIPTION_CODE.
#define ZU_DEFINE_ERROR_DOMAIN_ITEMS(Domain, ValueType, PushFormat, ReadBack)                     \
  FXErrorItem##Domain::~FXErrorItem##Domain() = default;                                          \
  std::string FXErrorItem##Domain::AsString(EErrorOutputFormat format) const {                    \
    if (FXErrorText::HasPlainUserText(EErrorDomain::Domain, format))                              \
      return FXErrorText::UserText(EErrorDomain::Domain, *this, m_value, nullptr);                \
    return AsString();                                                                            \
  }                                                                                               \
  std::string FXErrorItem##Domain::AsString() const {                                             \
    return FXErrorText::FullText(EErrorDomain::Domain, *this, m_value);                           \
  }                                                                                               \
  boost::shared_ptr<FXErrorItem> FXErrorItem##Domain::Copy() const {                              \
    return boost::make_shared<FXErrorItem##Domain>(*this);                                        \
  }                                                                                               \
  FXErrorItem##Domain##Description::~FXErrorItem##Domain##Description() = default;                \
  std::string FXErrorItem##Domain##Description::AsString(EErrorOutputFormat format) const {       \
    if (format == EErrorOutputFormat::USER_SINGLE_LINE_CODE)                                      \
      return FXErrorItem##Domain::AsString(format);                                               \
    if (format == EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE)                          \
      return FXErrorText::UserText(EErrorDomain::Domain, *this, m_value, &m_description);         \
    return AsString();                                                                            \
  }                                                                                               \
  std::string FXErrorItem##Domain##Description::AsString() const {                                \
    return FXErrorItem##Domain::AsString() + "-" + m_description;                                 \
  }                                                                                               \
  boost::shared_ptr<FXErrorItem> FXErrorItem##Domain##Description::Copy() const {                 \
    return boost::make_shared<FXErrorItem##Domain##Description>(*this);                           \
  }

ZU_ERROR_DOMAINS(ZU_DEFINE_ERROR_DOMAIN_ITEMS)
