// Generated objects as the text of a mapping document: compact JSON, the members of each object
// in the order the library's own writer uses from version 11 on (and the order of the version's
// documents before), which is the text the library's JSON model gives for the same members.
#ifndef KOVA_GENERATOR_DOCUMENTTEXT_H_
#define KOVA_GENERATOR_DOCUMENTTEXT_H_

#include <KOVAGenerator/Generator.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kova::generator {

// Receives the text piece by piece, in order.
using Sink = std::function<void(std::string_view)>;

// One member of a generated object: its key and its value (a string or a boolean).
struct Field {
  std::string_view key;
  std::variant<std::string_view, bool> value;
};

// The members of object in a document of version, in the order they are written: kOVAId,
// PlexoId, RefId, IsLocal, CustomData (when not "null", from version 7), IsSetKSS (versions 9 and
// 10), KOVASynchroStamp and CEStamp (when not empty) up to version 10; from version 11 the
// writer's orders, references CustomData, IsLocal, PlexoId, kOVAId and instances kOVAId, PlexoId,
// IsLocal, RefId, CustomData, then the stamps. Version 6 objects have no kOVAId and no IsLocal
// member (the member name of their parent object is the id). The views refer to object.
void FieldsOf(const GeneratedObject& object, int version, bool isInstance, std::vector<Field>& fields);

// Writes a document of version from the objects given in generation order (each reference
// followed by its instances): {"version":N,"References":[{..., "Instances":[{...}]}]}, the
// "Instances" member only on references that have instances; in version 6
// {"version":6,"References":{ID:{...}},"RefInstances":{ID:{...}}}. The text goes to sink in
// pieces of about a megabyte, so that a document of any size is never held whole.
class DocumentText {
 public:
  DocumentText(int version, Sink sink);
  DocumentText(const DocumentText&) = delete;
  DocumentText& operator=(const DocumentText&) = delete;

  void Reference(const GeneratedObject& reference);
  void Instance(const GeneratedObject& instance);
  // Closes the document and hands the rest of the text to the sink.
  void Finish();

 private:
  // {members}, and the members alone, separated by commas.
  void Object(const GeneratedObject& object, bool isInstance);
  void Members(const GeneratedObject& object, bool isInstance);
  void String(std::string_view value);
  void Key(std::string_view key);
  void Drain();

  int version_;
  Sink sink_;
  std::string text_;
  std::vector<Field> fields_;
  bool anyReference_ = false;
  bool anyInstance_ = false;  // of the current reference (version 6: of the document)
};

// The document of options, streamed to sink. Throws BadOptions.
void WriteDocument(const Options& options, const Sink& sink);

// A document held in memory, with the ids by which look-ups find its objects.
struct GeneratedDocument {
  std::string text;
  std::vector<std::string> instanceKovaIds;    // every instance's kOVA id, in document order
  std::vector<std::string> referencePlexoIds;  // every reference's Plexo id, in document order
  std::size_t objects = 0;                     // references and instances
};

// Throws BadOptions.
GeneratedDocument MakeDocument(const Options& options);

// text as the body of a JSON string (without the quotes), escaped as the library's JSON writer
// escapes: quote, backslash and the characters below U+0020 (\b \t \n \f \r, the others as \u00XX
// with upper-case digits); everything else as it is.
void AppendJsonEscaped(std::string& out, std::string_view text);

}  // namespace kova::generator

#endif  // KOVA_GENERATOR_DOCUMENTTEXT_H_
