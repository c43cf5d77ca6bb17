// drift DOC ATTRIBUTES: for every object of a document, whether its stored stamp still matches the
// stamp of the CAD object's current attribute values.
//
// The attribute file is read one line at a time (NDJSON: {"kova_id": ..., "attributes": {...}}), so
// memory follows the document, not the attribute file. Each line's object is looked up by kOVA id
// (a reference first, else an instance), its stamp recomputed with the library (the map form, as
// the stamp command computes it) and compared with the stored one.
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>
#include <KOVAMappingServices/ZANOmxJson.h>

#include <array>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "Attributes.h"
#include "Commands.h"
#include "DocumentCheck.h"
#include "Documents.h"
#include "Io.h"
#include "JsonLine.h"
#include "StampComputation.h"
#include "Status.h"
#include "Text.h"

namespace kova::tool {

namespace {

enum class State { kInSync, kStale, kNoAttributes, kNoStamp, kNotComparable, kUnknownId };
constexpr std::array<const char*, 6> kStateNames = {"in-sync",  "stale",          "no-attributes",
                                                    "no-stamp", "not-comparable", "unknown-id"};

const char* Name(State state) { return kStateNames[static_cast<std::size_t>(state)]; }

// One record of the report.
struct Drift {
  std::string kovaId;
  const char* kind = nullptr;  // "reference", "instance", or null for an unknown id
  State state = State::kInSync;
  std::optional<std::string> stored;
  std::optional<std::string> computed;
};

// The stored stamp's state before any computation: no stamp, not comparable, or comparable.
std::optional<State> StoredState(const KOVAMappingPrivateObject& object) {
  const ZANUnicodeString stamp = object.GetKSStamp();
  const std::int32_t version = object.GetKSSVersion();
  if (stamp.IsEmpty() || version < 0) return State::kNoStamp;
  // A stamp derived from a CE stamp, or a text that is not a bare stamp, cannot be recomputed.
  if (version == 0 || StampForm(stamp.View(), version)) return State::kNotComparable;
  return std::nullopt;
}

class Report {
 public:
  Report(Output& out, bool json) : out_(out), json_(json) {}

  void Add(const Drift& drift) {
    const std::size_t kind = drift.kind == nullptr ? 2 : (std::string_view(drift.kind) == "reference" ? 0 : 1);
    ++counts_[kind][static_cast<std::size_t>(drift.state)];
    if (json_) {
      JsonLine record;
      record.String("kova_id", drift.kovaId);
      if (drift.kind != nullptr) {
        record.String("kind", drift.kind);
      } else {
        record.Null("kind");
      }
      out_.Write(record.String("state", Name(drift.state))
                     .OptionalString("stored", drift.stored)
                     .OptionalString("computed", drift.computed)
                     .Text() +
                 "\n");
      return;
    }
    if (drift.state == State::kInSync) return;
    std::string line = std::string(Name(drift.state)) + " " + (drift.kind != nullptr ? drift.kind : "id") + " " +
                       ShowValue(drift.kovaId);
    if (drift.state == State::kStale)
      line += ": stored " + ShowValue(*drift.stored) + ", computed " + ShowValue(*drift.computed);
    if (drift.state == State::kNotComparable) line += ": stored " + ShowValue(drift.stored.value_or(""));
    out_.Write(line + "\n");
  }

  // Whether every attribute line named an object in sync.
  bool AllGivenInSync() const {
    for (std::size_t kind = 0; kind < 3; ++kind) {
      for (State state : {State::kStale, State::kNoStamp, State::kNotComparable, State::kUnknownId}) {
        if (counts_[kind][static_cast<std::size_t>(state)] > 0) return false;
      }
    }
    return true;
  }

  void Summary() {
    static constexpr const char* kKinds[] = {"references", "instances", "unknown ids"};
    if (json_) {
      JsonLine record;
      record.Bool("summary", true);
      for (std::size_t kind = 0; kind < 2; ++kind) {
        JsonLine counts;
        for (std::size_t state = 0; state + 1 < kStateNames.size(); ++state) {
          counts.Number(kStateNames[state], static_cast<std::int64_t>(counts_[kind][state]));
        }
        record.Raw(kKinds[kind], counts.Text());
      }
      record.Number("unknown_ids", static_cast<std::int64_t>(counts_[2][static_cast<std::size_t>(State::kUnknownId)]));
      out_.Write(record.Text() + "\n");
      return;
    }
    std::string text = "summary:";
    for (std::size_t kind = 0; kind < 2; ++kind) {
      text += std::string(kind == 0 ? " " : "; ") + kKinds[kind] + ":";
      bool first = true;
      for (std::size_t state = 0; state + 1 < kStateNames.size(); ++state) {
        text += (first ? " " : ", ") + std::to_string(counts_[kind][state]) + " " + kStateNames[state];
        first = false;
      }
    }
    text += "; " + std::to_string(counts_[2][static_cast<std::size_t>(State::kUnknownId)]) + " unknown ids\n";
    out_.Write(text);
  }

 private:
  Output& out_;
  bool json_;
  std::size_t counts_[3][kStateNames.size()] = {};
};

// The kOVA id and attributes of one line of the attribute file; throws ToolError naming the line.
std::pair<ZANUnicodeString, AttributeMap> ParseLine(const std::string& line, const std::string& where) {
  ZANOmxJsonObject record;
  const HRESULT loaded = record.LoadFromString(ZANUnicodeString(line));
  if (ZANFailed(loaded) || !record.IsValidJsonObject()) {
    throw ToolError(where + ": not a JSON object {\"kova_id\": ..., \"attributes\": {...}}");
  }
  ZANUnicodeString kovaId;
  if (ZANFailed(record.GetString("kova_id", kovaId))) throw ToolError(where + ": \"kova_id\" must be a string");
  ZANOmxJsonObject attributes;
  if (ZANFailed(record.GetJsonObject("attributes", attributes))) {
    throw ToolError(where + ": \"attributes\" must be an object of attribute names and values");
  }
  return {std::move(kovaId), AttributesOf(attributes, where)};
}

}  // namespace

int RunDrift(const DriftOptions& options) {
  if (!StampComputationEnabled()) throw ToolError(kStampComputationDisabled);
  DocumentRead read = ReadDocument(ReadInput(options.document));
  if (!read.Ok()) throw ToolError(options.document + ": " + read.ErrorText());

  std::unique_ptr<std::ifstream> file;
  std::istream* lines = &std::cin;
  if (options.attributes != "-") {
    // Read through ReadInput's checks first would hold the whole file: open it here instead, with
    // the same messages for a missing or unreadable file.
    file = std::make_unique<std::ifstream>(options.attributes, std::ios::binary);
    if (!*file) ReadInput(options.attributes);  // throws the reason
    lines = file.get();
  }

  Output out(options.output);
  Report report(out, options.json);
  std::unordered_set<const void*> given;
  std::string line;
  std::size_t number = 0;
  while (std::getline(*lines, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.find_first_not_of(" \t") == std::string::npos) continue;
    const std::string where = options.attributes + ":" + std::to_string(number);
    if (const std::optional<std::size_t> offset = FindInvalidUtf8(line)) {
      throw ToolError(where + ": not UTF-8 (invalid byte at offset " + std::to_string(*offset) + ")");
    }
    auto [kovaId, attributes] = ParseLine(line, where);

    Drift drift;
    drift.kovaId = kovaId.ConvertToChar();
    std::shared_ptr<KOVAMappingPrivateObject> object;
    KOVAMappingReference reference;
    KOVAMappingInstance instance;
    if (ZANSucceeded(read.table.GetReferenceFromKOVAId(kovaId, reference))) {
      object = KOVAPrivateAccess::GetPrivate(reference);
      drift.kind = "reference";
    } else if (ZANSucceeded(read.table.GetInstanceFromKOVAId(kovaId, instance))) {
      object = KOVAPrivateAccess::GetPrivate(instance);
      drift.kind = "instance";
    }
    if (!object) {
      drift.state = State::kUnknownId;
      report.Add(drift);
      continue;
    }
    given.insert(object.get());
    if (!object->GetKSStamp().IsEmpty()) drift.stored = object->GetKSStamp().ConvertToChar();
    if (const std::optional<State> state = StoredState(*object)) {
      drift.state = *state;
      report.Add(drift);
      continue;
    }
    const StampComputation computed = ComputeStamp(attributes, nullptr, false);
    if (ZANFailed(computed.status)) throw ToolError(where + ": stamp not computed: " + computed.ErrorText());
    drift.computed = computed.stamp.ConvertToChar();
    drift.state = drift.computed == drift.stored ? State::kInSync : State::kStale;
    report.Add(drift);
  }
  if (lines->bad()) throw ToolError(options.attributes + ": cannot read");

  // The objects no line named, in document order.
  const KOVAMappingTable& table = read.table;
  for (const KOVAMappingReference& reference : table.GetReferences()) {
    const auto add = [&](const KOVAMappingPrivateObject& object, const char* kind) {
      if (given.count(&object) > 0) return;
      Drift drift;
      drift.kovaId = object.GetKOVAID().ConvertToChar();
      drift.kind = kind;
      drift.state = State::kNoAttributes;
      if (!object.GetKSStamp().IsEmpty()) drift.stored = object.GetKSStamp().ConvertToChar();
      report.Add(drift);
    };
    add(*KOVAPrivateAccess::GetPrivate(reference), "reference");
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      add(*KOVAPrivateAccess::GetPrivate(instance), "instance");
    }
  }
  report.Summary();
  out.Commit();
  return report.AllGivenInSync() ? 0 : 1;
}

}  // namespace kova::tool
