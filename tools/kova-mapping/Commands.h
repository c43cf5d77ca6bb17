// The commands of kova-mapping. Each takes its parsed options and returns the exit status; an
// error that stops a command is thrown as ToolError (main reports it).
#ifndef KOVA_TOOLS_KOVA_MAPPING_COMMANDS_H_
#define KOVA_TOOLS_KOVA_MAPPING_COMMANDS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kova::tool {

// check FILE...: one line a document (one JSON record with json); 0 when all read, 1 otherwise.
struct CheckOptions {
  std::vector<std::string> files;
  std::string output;
  bool json = false;
};
int RunCheck(const CheckOptions& options);

// dump FILE: the table's dump and its custom data lines (one JSON record with json); 1 when the
// read failed.
struct DumpOptions {
  std::string file;
  std::string output;
  bool json = false;
};
int RunDump(const DumpOptions& options);

// convert FILE: the document in the current version, plain or enveloped.
struct ConvertOptions {
  std::string file;
  std::string output;
  bool compress = false;
  bool plain = false;
};
int RunConvert(const ConvertOptions& options);

// pack FILE / unpack FILE: the envelope of a text, and the text of an envelope.
struct EnvelopeOptions {
  std::string file;
  std::string output;
};
int RunPack(const EnvelopeOptions& options);
int RunUnpack(const EnvelopeOptions& options);

// stamp ATTRS.json: the stamp of attribute values, or its stamp text.
struct StampOptions {
  std::string file;
  std::string output;
  std::string names;  // comma-separated; empty: every attribute of the file (map form)
  bool namesGiven = false;
  bool text = false;
  bool json = false;  // one record: file, stamp and text
};
int RunStamp(const StampOptions& options);

// ces CESTAMP: the stamp derived from a CE stamp.
struct CesOptions {
  std::string ceStamp;
  std::string output;
};
int RunCes(const CesOptions& options);

// diff OLD NEW: 0 equal, 1 different (errors are 2, set by main).
struct DiffOptions {
  std::string oldFile;
  std::string newFile;
  std::string output;
  std::string format = "text";  // "text" (lines and a summary) or "dot" (a Graphviz graph)
  bool json = false;            // one JSON record a change, then a summary record
};
int RunDiff(const DiffOptions& options);

// tree FILE: the product structure, as text or as a Graphviz graph; 1 when the read failed.
struct TreeOptions {
  std::string file;
  std::string output;
  std::string format = "text";  // "text" or "dot"
  bool ascii = false;           // text drawn without box-drawing characters
  int maxDepth = 100;           // instances below the top of a tree (kDefaultTreeDepth)
};
int RunTree(const TreeOptions& options);

// audit PATH...: many documents checked in parallel, then a summary; 0 when all read, 1 otherwise.
struct AuditOptions {
  std::vector<std::string> paths;  // files, directories (walked), "-" for a list of paths
  std::vector<std::string> globs;  // names of the files taken from directories (default *.json, *.envelope)
  int jobs = 0;                    // threads; 0: one a core
  bool json = false;
  bool stamps = false;                   // also list the stamps not in a known form
  std::optional<bool> progress;          // the progress bar; default: when standard error is a terminal
  std::uint64_t maxSize = 512ULL << 20;  // larger files are reported, not read
  std::string output;
};
int RunAudit(const AuditOptions& options);

// drift DOC ATTRIBUTES: each object's stored stamp against the stamp of its current attribute
// values; 0 when every attribute line names an object in sync, 1 otherwise (errors are 2).
struct DriftOptions {
  std::string document;
  std::string attributes;  // NDJSON, one {"kova_id": ..., "attributes": {...}} a line; "-" standard input
  bool json = false;
  std::string output;
};
int RunDrift(const DriftOptions& options);

// generate: a synthetic document.
struct GenerateOptions {
  std::int64_t references = 1;
  std::int64_t instances = 0;
  int version = 0;  // 0: the current version
  std::uint32_t seed = 1;
  bool compress = false;
  std::string output;
};
int RunGenerate(const GenerateOptions& options);

// schema VERSION: the JSON Schema of mapping documents of that version (6 to 12), as installed.
struct SchemaOptions {
  int version = 0;
  std::string output;
};
int RunSchema(const SchemaOptions& options);
// Why text is not a version that has a schema ("13", "12.0", "0xc"), or empty when it is one: the
// check of the command line's VERSION.
std::string SchemaVersionProblem(const std::string& text);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_COMMANDS_H_
