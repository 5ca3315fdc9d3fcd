// The process's log: one call per priority. Formats are checked by the compiler.
#pragma once

#include "platform/android_log.h"

#define KESEXT_LOG_TAG "RIL-KESEXT"

/// Logs one line at error priority, as nearly every line of this process is.
#define LOGE(...) __android_log_print(ANDROID_LOG_ERROR, KESEXT_LOG_TAG, __VA_ARGS__)
/// Logs one line at debug priority.
#define LOGD(...) __android_log_print(ANDROID_LOG_DEBUG, KESEXT_LOG_TAG, __VA_ARGS__)
