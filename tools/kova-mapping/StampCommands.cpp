// stamp ATTRS.json: the stamp of attribute values; ces CESTAMP: the stamp derived from a CE stamp.
#include <KOVAMappingServices/KOVASynchroStampServices.h>

#include <list>
#include <optional>

#include "Attributes.h"
#include "Commands.h"
#include "Io.h"
#include "JsonLine.h"
#include "StampComputation.h"
#include "Status.h"
#include "Text.h"

namespace kova::tool {

int RunStamp(const StampOptions& options) {
  // The library reads the switch once, when it is loaded: the environment of this process says.
  if (!StampComputationEnabled()) throw ToolError(kStampComputationDisabled);
  const AttributeMap attributes = ReadAttributes(ReadInput(options.file), options.file);
  std::list<ZANUnicodeString> names;
  if (options.namesGiven) {
    for (const std::string& name : Split(options.names, ',')) {
      if (name.empty()) throw ToolError("--names: empty attribute name in " + JsonQuoted(options.names));
      ZANUnicodeString key(name);
      if (attributes.find(key) == attributes.end()) {
        throw ToolError("--names: no attribute " + JsonQuoted(name) + " in " + options.file);
      }
      names.push_back(std::move(key));
    }
  }
  Output out(options.output);

  const bool wantText = options.text || options.json;
  const StampComputation result = ComputeStamp(attributes, options.namesGiven ? &names : nullptr, wantText);
  if (ZANFailed(result.status)) throw ToolError(options.file + ": stamp not computed: " + result.ErrorText());
  if (wantText && !result.text) throw ToolError(options.file + ": the stamp service did not show its stamp text");
  if (options.json) {
    out.Write(JsonLine()
                  .String("file", options.file)
                  .String("stamp", result.stamp.View())
                  .OptionalString("text", result.text)
                  .Text() +
              "\n");
  } else if (options.text) {
    // The library's own text: the stamp service logs it just before digesting it.
    out.Write(*result.text + "\n");
  } else {
    out.Write(std::string(result.stamp.View()) + "\n");
  }
  out.Commit();
  return 0;
}

int RunCes(const CesOptions& options) {
  if (const std::optional<std::size_t> offset = FindInvalidUtf8(options.ceStamp)) {
    throw ToolError("CESTAMP: not UTF-8 (invalid byte at offset " + std::to_string(*offset) + ")");
  }
  Output out(options.output);
  ZANUnicodeString stamp;
  HRESULT status = S_OK;
  status = KOVASynchroStampServices::GetKSSFromCES(ZANUnicodeString(options.ceStamp), stamp);
  if (ZANFailed(status)) {
    throw ToolError("stamp not derived: error " + FormatStatus(status) + ": " + StatusMeaning(status));
  }
  out.Write(std::string(stamp.View()) + "\n");
  out.Commit();
  return 0;
}

}  // namespace kova::tool
