// The host's log, properties, drop-box and device paths.
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>

#include "handset/folder.h"
#include "platform/android_log.h"
#include "platform/device_path.h"
#include "platform/dropbox.h"
#include "platform/host/unique_fd.h"
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

TEST_F(PlatformTest, ADropBoxEntryAppearsUnderItsNameWithItsTextInIt) {
  const std::string dropbox = folder_.path("/dropbox");
  std::filesystem::remove_all(dropbox);
  EXPECT_TRUE(NativeDropBoxWriter::addText("makes_the_folder", ""));
  const host::UniqueFd watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  ASSERT_GE(inotify_add_watch(watch.get(), dropbox.c_str(), IN_CREATE | IN_MOVED_TO | IN_MODIFY), 0);
  EXPECT_TRUE(NativeDropBoxWriter::addText("modem_adam", "whole"));

  alignas(inotify_event) char events[4096];
  const ssize_t size = read(watch.get(), events, sizeof events);
  bool named = false;
  for (ssize_t at = 0; at < size;) {
    const auto* event = static_cast<const inotify_event*>(static_cast<const void*>(events + at));
    named = named || event->name[0] != '.';
    EXPECT_FALSE(named && (event->mask & IN_MODIFY) != 0) << event->name;
    at += static_cast<ssize_t>(sizeof *event + event->len);
  }
  EXPECT_TRUE(named);
  const auto entries = folder_.dropboxEntries();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[1].tag + "=" + entries[1].text, "modem_adam=whole");
  const std::filesystem::directory_iterator files(dropbox);
  EXPECT_EQ(std::distance(begin(files), end(files)), 2) << "nothing but the entries";
}

TEST_F(PlatformTest, EntriesOfTheSameMillisecondAreAllKept) {
  constexpr size_t kEntries = 200;  // several a millisecond
  for (size_t i = 0; i < kEntries; ++i)
    EXPECT_TRUE(NativeDropBoxWriter::addText("tag", "text"));
  EXPECT_EQ(folder_.dropboxEntries().size(), kEntries);
}

TEST_F(PlatformTest, WhatCannotBeNamedOrWrittenLeavesNothing) {
  const std::string long_name(300, 'n');
  EXPECT_FALSE(NativeDropBoxWriter::addText(long_name.c_str(), "text"));
  EXPECT_LT(property_set(long_name.c_str(), "text"), 0);

  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit part_of_the_text{.rlim_cur = 3, .rlim_max = before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &part_of_the_text);
  const bool added = NativeDropBoxWriter::addText("tag", "text");
  const int set = property_set("key", "text");
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_FALSE(added);
  EXPECT_LT(set, 0);
  for (const char* folder : {"/dropbox", "/properties"})
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path(folder))) << folder;
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
