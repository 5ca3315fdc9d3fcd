// The system log, from the handset's liblog.
#pragma once

extern "C" {

enum android_LogPriority { ANDROID_LOG_DEBUG = 3, ANDROID_LOG_ERROR = 6 };

/// Writes one line; a text of 4000 characters is not cut. Leaves errno as it was.
[[gnu::format(printf, 3, 4)]] int __android_log_print(int priority, const char* tag, const char* format, ...);
}
