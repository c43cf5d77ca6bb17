// The kova-mapping tool's own handling of what users give it: attribute files for the stamp
// command, pairs of documents for diff, and the quoting of ids and values in its listings. Bad
// input may only stop a command with a ToolError (reported on one line by the tool), never crash
// it or throw anything else.
//
// The first byte chooses the part; the rest is its input:
//   0  an attribute file, read with ReadAttributes;
//   1  two documents separated by the first NUL byte, read and compared with DiffTables: a table
//      compared with itself shows no change, and the counts one way are the other way's mirror;
//   2  a text shown by ShowValue and JsonQuoted: valid UTF-8 comes back unchanged from the JSON
//      string literal, and a shown value holds no character below U+0020 (it stays on its line).
#include <KOVAMappingServices/ZANOmxJson.h>

#include <cstdint>
#include <string>

#include "Attributes.h"
#include "Diff.h"
#include "Documents.h"
#include "Status.h"
#include "Text.h"
#include "fuzz/FuzzSupport.h"

namespace {

void Attributes(const std::string& text) {
  try {
    const kova::tool::AttributeMap attributes = kova::tool::ReadAttributes(text, "fuzz");
    for (const auto& [name, parameter] : attributes) {
      kova::fuzz::Check(static_cast<bool>(parameter), "an attribute without a parameter");
    }
  } catch (const kova::tool::ToolError&) {
    // A refused file: the tool reports it.
  }
}

void Diff(const std::string& input) {
  const std::size_t split = input.find('\0');
  const std::string first = input.substr(0, split);
  const std::string second = split == std::string::npos ? std::string() : input.substr(split + 1);
  kova::tool::DocumentRead before = kova::tool::ReadDocument(first);
  kova::tool::DocumentRead after = kova::tool::ReadDocument(second);
  if (!before.Ok() || !after.Ok()) return;
  kova::fuzz::Check(kova::tool::DiffTables(before.table, before.table).Equal(),
                    "a table compared with itself shows changes");
  const kova::tool::TableDiff forward = kova::tool::DiffTables(before.table, after.table);
  const kova::tool::TableDiff backward = kova::tool::DiffTables(after.table, before.table);
  kova::fuzz::Check(forward.added == backward.removed && forward.removed == backward.added &&
                        forward.moved == backward.moved && forward.changed == backward.changed,
                    "the counts of a diff are not the mirror of the reverse diff");
  kova::fuzz::Check(forward.Equal() == backward.Equal(), "a diff is empty one way only");
}

void Quoting(const std::string& text) {
  const std::string shown = kova::tool::ShowValue(text);
  for (const char c : shown) {
    kova::fuzz::Check(static_cast<unsigned char>(c) >= 0x20, "a shown value holds a control character below U+0020");
  }
  if (kova::tool::FindInvalidUtf8(text)) return;
  const std::string document = "{\"v\":" + kova::tool::JsonQuoted(text) + "}";
  ZANOmxJsonObject object;
  kova::fuzz::Check(object.LoadFromString(document.data(), document.size()) == S_OK,
                    "a quoted value is not a JSON string literal");
  ZANUnicodeString back;
  kova::fuzz::Check(object.GetString("v", back) == S_OK && back.View() == text,
                    "a quoted value does not read back as the text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kova::fuzz::Reader reader(data, size);
  const std::uint8_t part = reader.Byte();
  const std::string rest = reader.Rest();
  switch (part % 3) {
    case 0: Attributes(rest); break;
    case 1: Diff(rest); break;
    default: Quoting(rest); break;
  }
  return 0;
}
