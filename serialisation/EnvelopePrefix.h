// Finding the prefix of a compressed envelope in a text (internal).
#ifndef KOVA_SERIALISATION_ENVELOPEPREFIX_H_
#define KOVA_SERIALISATION_ENVELOPEPREFIX_H_

#include <cstddef>
#include <optional>
#include <string_view>

namespace kova {

struct EnvelopePrefixMatch {
  std::size_t position = 0;  // byte offset of the "V"
  std::size_t length = 0;    // bytes of the prefix, both colons included
};

// The leftmost occurrence in text of "V", one or more digits 0-9, ":", one or more digits, ":" —
// the match of the regular expression V\d+:\d+: in an unanchored ECMAScript search — or nothing.
//
// At a given "V" there is at most one candidate: each digit run has to be followed by ":", and a
// run stopped before its last digit is followed by a digit, so only the whole run can be the one
// that matches (a greedy, backtracking matcher ends up with that same run). The first "V" whose
// candidate is complete gives the leftmost match. The runs read after different "V"s do not
// overlap, so every byte is read a bounded number of times: linear time, constant stack, whatever
// the length of the text.
inline std::optional<EnvelopePrefixMatch> FindEnvelopePrefix(std::string_view text) noexcept {
  const auto endOfDigits = [text](std::size_t from) noexcept {
    while (from < text.size() && text[from] >= '0' && text[from] <= '9') ++from;
    return from;
  };
  // Whether a non-empty digit run starts at from and is followed by ":"; end is set past the ":".
  const auto digitsThenColon = [&](std::size_t from, std::size_t& end) noexcept {
    const std::size_t digitsEnd = endOfDigits(from);
    if (digitsEnd == from || digitsEnd >= text.size() || text[digitsEnd] != ':') return false;
    end = digitsEnd + 1;
    return true;
  };
  for (std::size_t v = text.find('V'); v != std::string_view::npos; v = text.find('V', v + 1)) {
    std::size_t afterVersion = 0;
    std::size_t afterSize = 0;
    if (digitsThenColon(v + 1, afterVersion) && digitsThenColon(afterVersion, afterSize)) {
      return EnvelopePrefixMatch{v, afterSize - v};
    }
  }
  return std::nullopt;
}

}  // namespace kova

#endif  // KOVA_SERIALISATION_ENVELOPEPREFIX_H_
