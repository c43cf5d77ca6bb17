// stamp ATTRS.json: the stamp of attribute values; ces CESTAMP: the stamp derived from a CE stamp.
#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnwBuilder.h>

#include <cstdlib>
#include <list>
#include <optional>

#include "Attributes.h"
#include "Commands.h"
#include "Io.h"
#include "Status.h"
#include "Text.h"

namespace kova::tool {

namespace {

// The context of the stamp service's lines; its last line is the stamp text.
constexpr std::string_view kStampContext = "KOVASynchroStampServices";

// The platform type of the object that carries the attributes for --names: a reference type, for
// which stamps are computed (instance types are refused by the stamp service).
constexpr const char* kObjectType = "GRDReference";

}  // namespace

int RunStamp(const StampOptions& options) {
  // The library reads the switch once, when it is loaded: the environment of this process says.
  if (std::getenv("DONOTUSE_ENABLEKSSGEN") == nullptr) {
    throw ToolError("stamp computation is disabled: set DONOTUSE_ENABLEKSSGEN to enable it");
  }
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

  ZANUnicodeString stamp;
  HRESULT status = S_OK;
  std::optional<std::string> stampText;
  {
    // The stamp service shows its stamp text in a line of its own, the last it emits before
    // digesting it.
    KOVALogCapture capture(KOVALogCapture::Wants::kEverything);
    if (options.namesGiven) {
      const ZANBaseUnknown_var object = ZANKnwBuilder::MakeObject(ZANKnwBuilder::FindType(kObjectType), attributes);
      status = KOVASynchroStampServices::ComputeKOVASynchroStamp(object, names, stamp);
    } else {
      status = KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, stamp);
    }
    for (const KOVALogLine& line : capture.Lines()) {
      if (line.context == kStampContext) stampText = line.message;
    }
  }
  if (ZANFailed(status)) {
    throw ToolError(options.file + ": stamp not computed: error " + FormatStatus(status) + ": " +
                    (status == E_FAIL ? std::string("refused by the stamp service") : StatusMeaning(status)));
  }
  if (options.text) {
    // The library's own text: the stamp service logs it just before digesting it.
    if (!stampText) throw ToolError(options.file + ": the stamp service did not show its stamp text");
    out.Write(*stampText + "\n");
  } else {
    out.Write(std::string(stamp.View()) + "\n");
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
