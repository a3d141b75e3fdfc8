#include "errors/ZuError.h"

#include <cstdarg>
#include <new>
#include <stdexcept>
#include <vector>

#include <boost/make_shared.hpp>

#include "errors/ErrorItemFactory.h"
#include "errors/ErrorUtil.h"
#include "logging/LogHook.h"
#include "text/StringFormat.h"

// The chain body. Items are kept oldest first, so that a push is an append
// and the root cause is the front; every reader walks it backwards.
class FXErrorPrivate {
 public:
  std::vector<boost::shared_ptr<FXErrorItem>> items;
};

namespace {

void ReportLostItem(const char* function, unsigned int line, const FXErrorItem* item) noexcept {
  try {
    const std::string text = item ? item->AsString() : std::string();
    FXLogHook::Write(-1, function, line, "Failed to allocate memory, error handling is compromised, ErrorItem=%s",
                     text.c_str());
  } catch (...) {
    // Out of memory even for the message: nothing more can be said.
  }
}

void Append(FXErrorPrivate& chain, const boost::shared_ptr<FXErrorItem>& item) {
  if (chain.items.size() == chain.items.max_size()) throw std::length_error("list too long");
  chain.items.push_back(item);
}

const FXErrorItem::Parameters& EmptyParameters() {
  static const FXErrorItem::Parameters empty;
  return empty;
}

}  // namespace

namespace FXErrorDetail {

std::string ExpandDescription(const char* format, va_list args) {
  std::string text;
  if (FXString::FormatArgList(text, format, args).IsError()) text.insert(0, "[BUFFEROVERFLOW] ");
  return text;
}

}  // namespace FXErrorDetail

CZuError::CZuError(HRESULT code, boost::shared_ptr<FXErrorItem> item) : m_code(code) {
  try {
    m_chain = boost::make_shared<FXErrorPrivate>();
    if (item) Append(*m_chain, item);
  } catch (const std::bad_alloc&) {
    ReportLostItem("CZuError::CZuError", 20, item.get());
  }
}

CZuError CZuError::Copy() const {
  CZuError copy;
  copy.m_code = m_code;
  if (m_chain) {
    copy.m_chain = boost::make_shared<FXErrorPrivate>();
    copy.m_chain->items.reserve(m_chain->items.size());
    for (const auto& item : m_chain->items) copy.m_chain->items.push_back(item->Copy());
  }
  return copy;
}

bool CZuError::Is(HRESULT value) const { return FXErrorUtil::Matches(m_code, value); }

CZuError& CZuError::Push(boost::shared_ptr<FXErrorItem> item) {
  if (!item) return *this;
  try {
    if (!m_chain) m_chain = boost::make_shared<FXErrorPrivate>();
    Append(*m_chain, item);
  } catch (const std::bad_alloc&) {
    ReportLostItem("CZuError::Push", 97, item.get());
  }
  return *this;
}

CZuError& CZuError::Push(const FXCodeLocation& location) {
  return Push(FXErrorDetail::MakeItem<FXErrorItem>(location));
}

CZuError& CZuError::Push(const FXCodeLocation& location, const char* format, ...) {
  va_list args;
  va_start(args, format);
  boost::shared_ptr<FXErrorItem> item =
      FXErrorDetail::MakeDescribedItem<FXErrorItem, FXErrorItemDescription>(location, format, args);
  va_end(args);
  return Push(item);
}

FXErrorItem* CZuError::Newest() const {
  if (!m_chain || m_chain->items.empty()) return nullptr;
  return m_chain->items.back().get();
}

CZuError& CZuError::operator<<(const boost::any& value) {
  if (FXErrorItem* item = Newest()) *item << value;
  return *this;
}

CZuError& CZuError::operator<<(const char* value) {
  return *this << boost::any(std::string(value ? value : ""));
}

CZuError& CZuError::operator<<(const wchar_t* value) {
  return *this << boost::any(std::wstring(value ? value : L""));
}

std::string CZuError::AsString() const {
  const unsigned int code = static_cast<unsigned int>(m_code);
  if (!m_chain) return m_code >= 0 ? std::string("Success") : FXString::Format("0x%X", code);
  std::string text = FXString::Format("0x%X:", code);
  const auto& items = m_chain->items;
  for (auto it = items.rbegin(); it != items.rend(); ++it) {
    if (it != items.rbegin()) text += " + ";
    text += "{";
    text += (*it)->AsString();
    text += "}";
  }
  return text;
}

std::string CZuError::AsString(EErrorOutputFormat format) const {
  if (format != EErrorOutputFormat::USER_SINGLE_LINE_CODE &&
      format != EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE)
    return AsString();
  if (!m_chain)
    return m_code >= 0 ? std::string("Success")
                       : FXString::Format("Error (code 0x%X)", static_cast<unsigned int>(m_code));
  // Users see the root cause only; newer items carry locations and context.
  if (m_chain->items.empty()) return std::string();
  return m_chain->items.front()->AsString(format);
}

const FXErrorItem::Parameters& CZuErrorBroker::GetParameters(const CZuError& result) {
  if (!result.m_chain || result.m_chain->items.empty()) return EmptyParameters();
  return result.m_chain->items.front()->GetParameters();
}
