#include "errors/ErrorText.h"

// The words for each domain's codes (system messages, C runtime texts, the
// SQLite and event-message tables) arrive with the error descriptions; until
// then every domain shows its number only.
std::string FXErrorText::CodeText(EErrorDomain, const FXErrorItem&, std::int64_t) {
  return std::string();
}
