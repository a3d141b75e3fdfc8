#include "cmdline/ArgumentList.h"

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "text/StringAlgo.h"
#include "text/StringConvert.h"

namespace FXCommandLine {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string Narrow(const wchar_t* text) { return text == nullptr ? std::string() : FXString::ToString(text); }
std::string Narrow(const char* text) { return text == nullptr ? std::string() : std::string(text); }

template <class Char>
void FromVectorT(int argc, const Char* const* argv, std::string& programName,
                 std::vector<CCommandLineArgument>& arguments) {
  programName.clear();
  arguments.clear();
  if (argv == nullptr || argc < 1) return;
  programName = Narrow(argv[0]);
  arguments.reserve(static_cast<std::size_t>(argc - 1));
  for (int i = 1; i < argc; ++i) arguments.emplace_back(Narrow(argv[i]));
}

}  // namespace

void Split(const char* line, std::vector<std::string>& tokens) {
  tokens.clear();
  if (line == nullptr) return;
  const char* p = line;
  for (;;) {
    while (IsBlank(*p)) ++p;
    if (*p == '\0') return;
    std::string token;
    bool quoted = false;
    while (*p != '\0' && (quoted || !IsBlank(*p))) {
      if (*p == '\\') {
        std::size_t slashes = 0;
        while (*p == '\\') ++slashes, ++p;
        if (*p == '"') {
          token.append(slashes / 2, '\\');
          if (slashes % 2 == 1) {
            token += '"';
            ++p;
          }
        } else {
          token.append(slashes, '\\');
        }
      } else if (*p == '"') {
        ++p;
        if (quoted && *p == '"') {
          token += '"';
          ++p;
        } else {
          quoted = !quoted;
        }
      } else {
        token += *p++;
      }
    }
    tokens.push_back(std::move(token));
  }
}

void AppendQuoted(const std::string& token, std::string& line) {
  if (!token.empty() && token.find_first_of(" \t\r\n\v\"") == std::string::npos) {
    line += token;
    return;
  }
  line += '"';
  std::size_t slashes = 0;
  for (const char c : token) {
    if (c == '\\') {
      ++slashes;
      continue;
    }
    // Backslashes before a quote are doubled and the quote escaped.
    line.append(c == '"' ? 2 * slashes + 1 : slashes, '\\');
    slashes = 0;
    line += c;
  }
  line.append(2 * slashes, '\\');  // before the closing quote
  line += '"';
}

std::string Join(const std::vector<CCommandLineArgument>& arguments) {
  std::string line;
  bool first = true;
  for (const CCommandLineArgument& argument : arguments) {
    if (!first) line += ' ';
    first = false;
    AppendQuoted(argument.GetText(), line);
  }
  return line;
}

void FromVector(int argc, const char* const* argv, std::string& programName,
                std::vector<CCommandLineArgument>& arguments) {
  FromVectorT(argc, argv, programName, arguments);
}
void FromVector(int argc, const wchar_t* const* argv, std::string& programName,
                std::vector<CCommandLineArgument>& arguments) {
  FromVectorT(argc, argv, programName, arguments);
}

void FromLine(const char* line, std::vector<CCommandLineArgument>& arguments) {
  std::vector<std::string> tokens;
  Split(line, tokens);
  arguments.clear();
  arguments.reserve(tokens.size());
  for (const std::string& token : tokens) arguments.emplace_back(token);
}
void FromLine(const wchar_t* line, std::vector<CCommandLineArgument>& arguments) {
  FromLine(Narrow(line).c_str(), arguments);
}

std::size_t CArgumentList::FindOption(const std::string& name, std::size_t start) const {
  for (std::size_t i = start; i < m_arguments.size(); ++i) {
    const std::string& text = m_arguments[i].GetText();
    if (!text.empty() && text[0] == '-' && text.size() - 1 == name.size() &&
        FXString::Detail::EqualNoCase(text.data() + 1, name.data(), name.size()))
      return i;
  }
  return kNotFound;
}

CZuError CArgumentList::GetOption(const std::string& name) {
  const std::size_t at = FindOption(name);
  if (at == kNotFound)
    return FXErrorUtil::ErrorWin32(ZU_HERE(m_where.getOption), ERROR_NOT_FOUND, "OptionName=%s", name.c_str());
  m_arguments[at].SetUsed();
  return CZuError::Success();
}

CZuError CArgumentList::GetOption(const std::string& name, bool& present) {
  const std::size_t at = FindOption(name);
  present = at != kNotFound;
  if (present) m_arguments[at].SetUsed();
  return CZuError::Success();
}

CZuError CArgumentList::GetOption(const std::string& name, std::string& value) {
  const std::size_t at = FindOption(name);
  if (at == kNotFound)
    return FXErrorUtil::ErrorWin32(ZU_HERE(m_where.getOption), ERROR_NOT_FOUND, "OptionName=%s", name.c_str());
  if (at + 1 >= m_arguments.size())
    return FXErrorUtil::ErrorWin32(ZU_HERE(m_where.getOption), ERROR_INVALID_PARAMETER,
                                   "No parameter found for option, OptionName=%s", name.c_str());
  m_arguments[at].SetUsed();
  m_arguments[at + 1].SetUsed();
  value = m_arguments[at + 1].GetText();
  return CZuError::Success();
}

CZuError CArgumentList::GetOption(const std::string& name, std::list<std::string>& values) {
  values.clear();
  std::size_t at = FindOption(name);
  if (at == kNotFound)
    return FXErrorUtil::ErrorWin32(ZU_HERE(m_where.getOption), ERROR_NOT_FOUND, "OptionName=%s", name.c_str());
  for (; at != kNotFound; at = FindOption(name, at + 2)) {
    if (at + 1 >= m_arguments.size())
      return FXErrorUtil::ErrorWin32(ZU_HERE(m_where.getOption), ERROR_INVALID_PARAMETER,
                                     "No parameter found for option, OptionName=%s, Occurrence=%llu", name.c_str(),
                                     static_cast<unsigned long long>(values.size() + 1));
    m_arguments[at].SetUsed();
    m_arguments[at + 1].SetUsed();
    values.push_back(m_arguments[at + 1].GetText());
  }
  return CZuError::Success();
}

CZuError CArgumentList::AddOption(const std::string& name, const std::string& value) {
  const std::size_t at = FindOption(name);
  if (at == kNotFound) {
    m_arguments.emplace_back(name);
    m_arguments.emplace_back(value);
    return CZuError::Success();
  }
  if (at + 1 >= m_arguments.size())
    return FXErrorUtil::ErrorWin32(ZU_HERE(m_where.addOption), ERROR_INVALID_PARAMETER,
                                   "No parameter found for option, OptionName=%s", name.c_str());
  m_arguments[at + 1].SetText(value);
  return CZuError::Success();
}

CZuError CArgumentList::AddOption(const std::string& name) {
  if (FindOption(name) == kNotFound) m_arguments.emplace_back(name);
  return CZuError::Success();
}

CZuError CArgumentList::GetArgument(int position, std::string& value) {
  if (position < 0 || static_cast<std::size_t>(position) >= m_arguments.size())
    return FXErrorUtil::ErrorWin32(ZU_HERE(m_where.getArgument), ERROR_NOT_FOUND, "Position=%d, Count=%llu", position,
                                   static_cast<unsigned long long>(m_arguments.size()));
  m_arguments[static_cast<std::size_t>(position)].SetUsed();
  value = m_arguments[static_cast<std::size_t>(position)].GetText();
  return CZuError::Success();
}

int CArgumentList::GetUnusedArgumentCount() {
  CZuLogger& logger = CZuLogger::GetGlobalInstance();
  int count = 0;
  for (std::size_t i = 0; i < m_arguments.size(); ++i) {
    if (m_arguments[i].IsUsed()) continue;
    ++count;
    if (logger.GetDebugLevel() >= 2)
      logger.LogMessage(2, m_where.getUnusedArgumentCount, __LINE__, "", "Unused argument, position=%d, Argument=%s",
                        static_cast<int>(i + 1), m_arguments[i].GetText().c_str());
  }
  return count;
}

void CArgumentList::GetUnusedArguments(std::list<std::string>& out) const {
  for (const CCommandLineArgument& argument : m_arguments)
    if (!argument.IsUsed()) out.push_back(argument.GetText());
}

CZuError CArgumentList::RemoveOption(const std::string& name, bool withValue) {
  std::size_t at = FindOption(name);
  if (at == kNotFound)
    return FXErrorUtil::ErrorWin32(ZU_HERE(m_where.removeOption), ERROR_NOT_FOUND, "OptionName=%s", name.c_str());
  // One pass that keeps everything but the occurrences (and their values).
  std::size_t kept = at;
  while (at < m_arguments.size()) {
    const std::size_t skip = withValue && at + 1 < m_arguments.size() ? 2 : 1;
    const std::size_t next = FindOption(name, at + skip);
    const std::size_t stop = next == kNotFound ? m_arguments.size() : next;
    for (std::size_t i = at + skip; i < stop; ++i) m_arguments[kept++] = std::move(m_arguments[i]);
    at = stop;
  }
  m_arguments.erase(m_arguments.begin() + static_cast<std::ptrdiff_t>(kept), m_arguments.end());
  return CZuError::Success();
}

}  // namespace FXCommandLine
