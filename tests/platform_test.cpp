// The host's log, properties, drop-box and device paths.
#include <gtest/gtest.h>

#include <filesystem>

#include "handset/folder.h"
#include "platform/android_log.h"
#include "platform/device_path.h"
#include "platform/dropbox.h"
#include "platform/properties.h"

namespace kesext_test {
namespace {

class PlatformTest : public ::testing::Test {
 protected:
  PlatformTest() { setenv("HANDSET_ROOT", folder_.root().c_str(), 1); }
  std::string Property(const char* name, const char* fallback) {
    char value[PROPERTY_VALUE_MAX];
    const int length = property_get(name, value, fallback);
    EXPECT_EQ(static_cast<size_t>(length), std::string(value).size());
    return value;
  }
  handset::Folder folder_;
};

TEST_F(PlatformTest, ALogLineHasPriorityTagAndTextAndOneLineFeed) {
  ::testing::internal::CaptureStderr();
  const std::string longest(4000, 'x');
  const std::string beyond(20'000, 'y');
  errno = 77;
  __android_log_print(ANDROID_LOG_ERROR, "TAG", "a %d\n", 1);
  __android_log_print(ANDROID_LOG_DEBUG, "TAG", "b\n\n");
  __android_log_print(ANDROID_LOG_ERROR, "TAG", "%s", longest.c_str());
  __android_log_print(ANDROID_LOG_ERROR, "TAG", "%s", beyond.c_str());
  __android_log_print(ANDROID_LOG_ERROR, "TAG", "%s", "");
  EXPECT_EQ(errno, 77);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "E TAG: a 1\nD TAG: b\n\nE TAG: " + longest + "\nE TAG: " + beyond + "\nE TAG: \n");
}

TEST_F(PlatformTest, PropertiesAreFiles) {
  EXPECT_EQ(Property("ro.none", "fallback"), "fallback");
  EXPECT_EQ(Property("ro.none", nullptr), "");
  folder_.writeFile("/properties/ro.baseband", "mdm\n");
  EXPECT_EQ(Property("ro.baseband", ""), "mdm");
  folder_.writeFile("/properties/two", "a\n\n");
  EXPECT_EQ(Property("two", ""), "a\n");
  folder_.writeFile("/properties/long", std::string(500, 'z'));
  EXPECT_EQ(Property("long", ""), std::string(91, 'z'));

  EXPECT_EQ(property_set("ril.x", "1"), 0);
  EXPECT_EQ(property_set("ril.x", "23"), 0);
  EXPECT_EQ(folder_.property("ril.x"), "23");
  EXPECT_EQ(property_set("ril.x", std::string(91, 'v').c_str()), 0);
  EXPECT_LT(property_set("ril.x", std::string(92, 'v').c_str()), 0);
  EXPECT_EQ(folder_.property("ril.x"), std::string(91, 'v'));
  std::filesystem::remove_all(folder_.path("/properties"));
  EXPECT_EQ(property_set("ril.y", "made"), 0);
  EXPECT_EQ(folder_.property("ril.y"), "made");
}

TEST_F(PlatformTest, DropBoxEntriesAreFilesOfTheirOwn) {
  std::filesystem::remove_all(folder_.path("/dropbox"));
  for (const char* text : {"one", "two", "three"})
    EXPECT_TRUE(NativeDropBoxWriter::addText("modem_adam", text));
  EXPECT_EQ(folder_.dropboxEntries().size(), 3U);
}

TEST_F(PlatformTest, DevicePathsAreBelowTheHandsetFolder) {
  char path[kDevicePathMax];
  EXPECT_STREQ(device_path("/data/adam", path, sizeof path), folder_.path("/data/adam").c_str());
  EXPECT_STREQ(device_path("", path, sizeof path), "");
  EXPECT_STREQ(device_path("/data/adam", path, 8), "") << "no room";
  for (const char* root : {"", static_cast<const char*>(nullptr)}) {
    if (root != nullptr)
      setenv("HANDSET_ROOT", root, 1);
    else
      unsetenv("HANDSET_ROOT");
    EXPECT_STREQ(device_path("/proc/bootinfo", path, sizeof path), "/proc/bootinfo");
  }
}

}  // namespace
}  // namespace kesext_test
