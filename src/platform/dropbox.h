// The drop-box service, from the handset's libadropbox.
#pragma once

class NativeDropBoxWriter {
 public:
  /// Hands a text to the drop-box under a tag. False when it was not taken.
  static bool addText(const char* tag, const char* text);
};
