#include "paths/FilterFlags.h"

#include <iterator>

const TFlagName* BFilterNodeState::DisplayTable(std::size_t& count) {
  static const TFlagName table[] = {
      {FILTER_NODE_PLACEHOLDER, FILTER_NODE_STATE, "(Placeholder)"},
      {FILTER_NODE_FILTER, FILTER_NODE_STATE, "Filter"},
      {FILTER_NODE_EXCEPTION, FILTER_NODE_STATE, "Exception"},
      {FILTER_NODE_NOINHERIT, FILTER_NODE_NOINHERIT, "NoInherit"},
  };
  count = std::size(table);
  return table;
}

const TFlagName* BFilterTermOptions::DisplayTable(std::size_t& count) {
  static const TFlagName table[] = {
      {FILTER_CASE_DEFAULT, FILTER_CASE_STATE, "CaseDefault"},
      {FILTER_CASE_INSENSITIVE, FILTER_CASE_STATE, "CaseInsensitive"},
      {FILTER_CASE_SENSITIVE, FILTER_CASE_STATE, "CaseSensitive"},
      {FILTER_CLASS_DEFAULT, FILTER_CLASS_STATE, "ClassDefault"},
      {FILTER_CLASS_PATH, FILTER_CLASS_STATE, "ClassPath"},
      {FILTER_CLASS_STRING, FILTER_CLASS_STATE, "ClassString"},
  };
  count = std::size(table);
  return table;
}

const TFlagName* BPathCacheNodeFlags::DisplayTable(std::size_t& count) {
  static const TFlagName table[] = {
      {PATHCACHE_NODE_CONTENT_UNKNOWN, PATHCACHE_NODE_CONTENT, "ContentUnknown"},
      {PATHCACHE_NODE_CONTENT_PARTIAL, PATHCACHE_NODE_CONTENT, "ContentPartial"},
      {PATHCACHE_NODE_CONTENT_COMPLETE, PATHCACHE_NODE_CONTENT, "ContentComplete"},
  };
  count = std::size(table);
  return table;
}

const TEnumName<EPathCacheResult::ENUM>* EPathCacheResult::DisplayTable(std::size_t& count) {
  static const TEnumName<ENUM> table[] = {
      ZU_ENUM_NAME(PATHCACHE_RESULT_FOUND),
      ZU_ENUM_NAME(PATHCACHE_RESULT_NOT_FOUND),
      ZU_ENUM_NAME(PATHCACHE_RESULT_NOT_CACHED),
  };
  count = std::size(table);
  return table;
}
