#include <string>

#include <gtest/gtest.h>

#include "errors/ZuErrorTraits.h"

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

}  // namespace
