// Sessions with the process as files: what is done, and below it what comes of that.
#pragma once

#include <iosfwd>

#include "support/hook_process_test.h"

namespace kesext_test {

/// A line of the file that begins with "$ " is done. Below it stand what goes to the parent ("<"), what the
/// modem is sent (">"), both without the zeros at their end, and the lines of the log, which begin with their
/// priority; "#" begins a title. What a line does to the modem lasts to the end of the file.
///
///   $ element INDEX [BYTES]        the modem has this element, without bytes none
///   $ answer SERVICE ID [BYTES]    the modem answers a message with these bytes, and zeros up to its size
///   $ fail SERVICE ID CODE         it refuses the message
///   $ refuse ID INDEX...           it refuses the vendor's message about these elements
///   $ restore SERVICE ID           it answers as by itself
///   $ cdma ID [PAYLOAD]            the parent asks, with the code 654321
///   $ generic ID [PAYLOAD]
///   $ raw BYTES
///   $ indicate ID [BYTES]          the modem indicates
///
/// Ids and bytes are hexadecimal. "A5*16" is a byte sixteen times, "pattern*16" sixteen that differ from
/// their neighbours, "text:Test" four characters.
class SessionTest : public ServingTest {
 protected:
  /// Plays tests/golden/NAME.log. Of requests only the lines with one of these texts stand there, if given.
  void Play(const std::string& name, const std::vector<std::string>& only = {});

 private:
  void Refuse(std::istream& words);
  void Do(std::istream& words, const std::vector<std::string>& only);
};

}  // namespace kesext_test
