// The flag sets and enumerations of filter sets, and of the path cache of
// the volume subsystem, which shares their pattern.
#pragma once

#include <cstddef>

#include "ZuUtilsExport.h"
#include "text/EnumWrapper.h"
#include "text/FlagWrapper.h"

// The state of a filter-set node or of an added item.
class ZUUTILS_API BFilterNodeState : public TFlagWrapper<BFilterNodeState> {
 public:
  enum : unsigned long {
    FILTER_NODE_STATE = 0x3,
    FILTER_NODE_PLACEHOLDER = 0x0,  // exists only to hold children
    FILTER_NODE_FILTER = 0x1,       // the path and everything below it is excluded
    FILTER_NODE_EXCEPTION = 0x2,    // the path and everything below it is taken back
    FILTER_NODE_NOINHERIT = 0x4,    // nothing reaches below from ancestors; upward walks stop here
  };
  using TFlagWrapper::TFlagWrapper;
  static const TFlagName* DisplayTable(std::size_t& count);
  unsigned long GetState() const { return GetSelected(FILTER_NODE_STATE); }
};

// The options of one filter term.
class ZUUTILS_API BFilterTermOptions : public TFlagWrapper<BFilterTermOptions> {
 public:
  enum : unsigned long {
    FILTER_CASE_STATE = 0x3,
    FILTER_CASE_DEFAULT = 0x0,
    FILTER_CASE_INSENSITIVE = 0x1,
    FILTER_CASE_SENSITIVE = 0x2,
    FILTER_CLASS_STATE = 0x30,
    FILTER_CLASS_DEFAULT = 0x00,
    FILTER_CLASS_PATH = 0x10,    // a path pattern
    FILTER_CLASS_STRING = 0x20,  // a plain string
  };
  using TFlagWrapper::TFlagWrapper;
  static const TFlagName* DisplayTable(std::size_t& count);
};

// What a path-cache node knows of its folder's content.
class ZUUTILS_API BPathCacheNodeFlags : public TFlagWrapper<BPathCacheNodeFlags> {
 public:
  enum : unsigned long {
    PATHCACHE_NODE_CONTENT = 0x3,
    PATHCACHE_NODE_CONTENT_UNKNOWN = 0x0,
    PATHCACHE_NODE_CONTENT_PARTIAL = 0x1,   // some children are cached
    PATHCACHE_NODE_CONTENT_COMPLETE = 0x2,  // every child is cached
  };
  using TFlagWrapper::TFlagWrapper;
  static const TFlagName* DisplayTable(std::size_t& count);
};

struct EPathCacheResultValues {
  enum ENUM : int {
    PATHCACHE_RESULT_FOUND = 0,
    PATHCACHE_RESULT_NOT_FOUND = 1,   // known not to exist
    PATHCACHE_RESULT_NOT_CACHED = 2,  // the cache cannot tell
  };
};

class ZUUTILS_API EPathCacheResult : public EPathCacheResultValues,
                                     public TEnumWrapper<EPathCacheResult, EPathCacheResultValues::ENUM> {
 public:
  using TEnumWrapper::TEnumWrapper;
  static const TEnumName<ENUM>* DisplayTable(std::size_t& count);
};

// Who a filter term applies to (CFilterTerm::AppliesTo: the masks share a
// bit). A term applies to everything unless told otherwise.
enum ENUM_FILTER_APPLIES : unsigned long {
  FILTER_APPLIES_BACKUP = 0x1,
  FILTER_APPLIES_RESTORE = 0x2,
  // Selection: a path that no selecting term reaches counts as filtered.
  FILTER_APPLIES_SELECTION = 0x4,
  FILTER_APPLIES_BROWSE = 0x8,
  FILTER_APPLIES_ALL = 0xFFFFFFFFUL,
};
