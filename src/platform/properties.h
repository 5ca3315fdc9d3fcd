// System properties, from the handset's libcutils.
#pragma once

/// Room for a property's value with its terminator, in bytes.
#define PROPERTY_VALUE_MAX 92

extern "C" {

/// Stores the value, or `default_value` (null counts as empty) when the property does not exist, in `value`,
/// which holds PROPERTY_VALUE_MAX bytes. Returns the length stored.
int property_get(const char* key, char* value, const char* default_value);

/// 0, or a negative value when the property cannot be set or the value does not fit.
int property_set(const char* key, const char* value);
}
