#include <string>

#include <gtest/gtest.h>

#include "errors/ZuErrorTraits.h"
#include "errors/ZuException.h"

namespace {

// A host's mapping: Win32 5 is critical, everything else passes unclassified.
class CHostTraits : public ZuErrorTraits {
 public:
  bool isCritical() override { return m_code == 5; }
  unsigned errorID() override { return m_code; }
  int severity() override { return isCritical() ? m_criticalLevel : m_informationalLevel; }
  void setCritical(DWORD code) override { m_code = code; }

 private:
  DWORD m_code = 0;
};

TEST(ZuErrorTraits, BaseClassifiesNothingAndHostsOverride) {
  ZuErrorTraits base;
  base.setCritical(5);
  base.setTextError(1, "m", "d", 2);
  base.setFileNotFoundError("f", 1);
  base.setSeverityLevels(1, 2, 3, 4);
  EXPECT_FALSE(base.isCritical() || base.isMajor() || base.isMinor() || base.isInformational() || base.isOSError());
  EXPECT_EQ(0u, base.errorID());
  EXPECT_EQ(0, base.severity());
  EXPECT_EQ("", base.textMessage());

  CHostTraits host;
  ZuErrorTraits& traits = host;
  traits.setSeverityLevels(40, 30, 20, 10);
  EXPECT_EQ(10, traits.severity());
  traits.setCritical(5);
  EXPECT_TRUE(traits.isCritical());
  EXPECT_EQ(5u, traits.errorID());
  EXPECT_EQ(40, traits.severity());
  EXPECT_FALSE(traits.isMajor());
}

TEST(ZuException, ConstructorsAndChainedFlags) {
  const ZuException plain("Cannot connect", "host a");
  EXPECT_EQ("Cannot connect", plain.message());
  EXPECT_EQ("host a", plain.detail());
  EXPECT_EQ(0, plain.code());
  EXPECT_FALSE(plain.isEventSuppressed() || plain.isPendingReasonSuppressed());

  EXPECT_TRUE(ZuException("m", "d", true).isEventSuppressed());
  EXPECT_TRUE(ZuException("m", "d", false, true).isPendingReasonSuppressed());
  const ZuException coded("Exit status", 255, "ls");
  EXPECT_EQ(255, coded.code());
  EXPECT_EQ("ls", coded.detail());

  try {
    throw ZuException("Host key not cached", 7, "b").suppressEvent().suppressPendingReason();
  } catch (const ZuException& e) {
    EXPECT_TRUE(e.isEventSuppressed());
    EXPECT_TRUE(e.isPendingReasonSuppressed());
    EXPECT_EQ(7, e.code());
  }
}

}  // namespace
