#include <KOVAGenerator/DocumentText.h>

#include <utility>

namespace kova::generator {

namespace {

constexpr std::size_t kPiece = 1 << 20;

}  // namespace

void FieldsOf(const GeneratedObject& object, int version, bool isInstance, std::vector<Field>& fields) {
  fields.clear();
  const bool hasCustomData = version >= 7 && object.customData != "null";
  const auto stamps = [&] {
    if (!object.stamp.empty()) fields.push_back({"KOVASynchroStamp", std::string_view(object.stamp)});
    if (!object.ceStamp.empty()) fields.push_back({"CEStamp", std::string_view(object.ceStamp)});
  };
  if (version >= 11) {
    if (isInstance) {
      fields.push_back({"kOVAId", std::string_view(object.kovaId)});
      fields.push_back({"PlexoId", std::string_view(object.plexoId)});
      fields.push_back({"IsLocal", object.isLocal});
      fields.push_back({"RefId", std::string_view(object.refId)});
      if (hasCustomData) fields.push_back({"CustomData", std::string_view(object.customData)});
    } else {
      if (hasCustomData) fields.push_back({"CustomData", std::string_view(object.customData)});
      fields.push_back({"IsLocal", object.isLocal});
      fields.push_back({"PlexoId", std::string_view(object.plexoId)});
      fields.push_back({"kOVAId", std::string_view(object.kovaId)});
    }
    stamps();
    return;
  }
  if (version >= 7) fields.push_back({"kOVAId", std::string_view(object.kovaId)});
  fields.push_back({"PlexoId", std::string_view(object.plexoId)});
  if (isInstance) fields.push_back({"RefId", std::string_view(object.refId)});
  if (version >= 7) fields.push_back({"IsLocal", object.isLocal});
  if (hasCustomData) fields.push_back({"CustomData", std::string_view(object.customData)});
  if (version == 9 || version == 10) fields.push_back({"IsSetKSS", object.isSetKSS});
  stamps();
}

void AppendJsonEscaped(std::string& out, std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '"': out.append("\\\""); break;
      case '\\': out.append("\\\\"); break;
      case '\b': out.append("\\b"); break;
      case '\t': out.append("\\t"); break;
      case '\n': out.append("\\n"); break;
      case '\f': out.append("\\f"); break;
      case '\r': out.append("\\r"); break;
      default:
        if (byte < 0x20) {
          out.append("\\u00");
          out.push_back(kHex[byte >> 4]);
          out.push_back(kHex[byte & 0xF]);
        } else {
          out.push_back(c);
        }
    }
  }
}

DocumentText::DocumentText(int version, Sink sink) : version_(version), sink_(std::move(sink)) {
  text_.reserve(kPiece + 4096);
  text_.append("{");
  Key("version");
  text_.append(std::to_string(version)).append(",");
  Key("References");
  text_.append(version == 6 ? "{" : "[");
}

void DocumentText::Reference(const GeneratedObject& reference) {
  if (version_ == 6) {
    // {"version":6,"References":{ID:{...}},"RefInstances":{ID:{...},...}}: the one reference
    // closes "References" and opens "RefInstances".
    Key(reference.kovaId);
    Object(reference, false);
    text_.append("},");
    Key("RefInstances");
    text_.append("{");
  } else {
    // [{...,"Instances":[{...},...]},...]: a reference stays open for its instances.
    if (anyReference_) text_.append(anyInstance_ ? "]}," : "},");
    anyInstance_ = false;
    text_.push_back('{');
    Members(reference, false);
  }
  anyReference_ = true;
}

void DocumentText::Instance(const GeneratedObject& instance) {
  if (version_ == 6) {
    if (anyInstance_) text_.append(",");
    Key(instance.kovaId);
  } else {
    text_.append(anyInstance_ ? "," : ",\"Instances\":[");
  }
  anyInstance_ = true;
  Object(instance, true);
}

void DocumentText::Finish() {
  if (version_ == 6) {
    text_.append("}}");
  } else {
    if (anyReference_) text_.append(anyInstance_ ? "]}" : "}");
    text_.append("]}");
  }
  Drain();
}

void DocumentText::Object(const GeneratedObject& object, bool isInstance) {
  text_.push_back('{');
  Members(object, isInstance);
  text_.push_back('}');
}

void DocumentText::Members(const GeneratedObject& object, bool isInstance) {
  FieldsOf(object, version_, isInstance, fields_);
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (i > 0) text_.push_back(',');
    Key(fields_[i].key);
    if (const auto* value = std::get_if<std::string_view>(&fields_[i].value)) {
      String(*value);
    } else {
      text_.append(std::get<bool>(fields_[i].value) ? "true" : "false");
    }
  }
}

void DocumentText::String(std::string_view value) {
  text_.push_back('"');
  AppendJsonEscaped(text_, value);
  text_.push_back('"');
  if (text_.size() >= kPiece) Drain();
}

void DocumentText::Key(std::string_view key) {
  String(key);
  text_.push_back(':');
}

void DocumentText::Drain() {
  if (text_.empty()) return;
  sink_(text_);
  text_.clear();
}

}  // namespace kova::generator
