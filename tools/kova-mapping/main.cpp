// kova-mapping: look into, convert and make mapping documents and synchro stamps.
//
// The command line is parsed with CLI11; each command lives in its own file (Commands.h). Errors
// are reported on one line of standard error, "kova-mapping: ...", never as a crash: the tool's own
// errors, the library's exceptions and memory exhaustion are all caught here.
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdint>
#include <exception>
#include <limits>
#include <string>

#include "Commands.h"
#include "Io.h"
#include "Status.h"
#include "Tree.h"

namespace {

using namespace kova::tool;

constexpr int kUsageError = 2;

std::string VersionText() {
  return "kova-mapping " KOVA_TOOL_VERSION " (KOVAMappingServices " KOVA_TOOL_VERSION
         ", writes mapping documents of version " +
         std::to_string(KOVAMappingPrivateTable::GetCurrentVersion()) + ")";
}

void AddOutput(CLI::App& command, std::string& output) {
  command.add_option("-o,--output", output, "Write to FILE instead of standard output")->option_text("FILE");
}

// The tool, from its command line to its exit status.
int Run(int argc, char** argv) {
  CLI::App app{
      "Look into, convert and make mapping documents (versions 6 to 12, plain or in a compressed\n"
      "envelope) and synchro stamps, with the KOVAMappingServices library.\n"
      "Every FILE may be - for standard input.",
      "kova-mapping"};
  app.set_version_flag("--version", VersionText(), "Show the tool's version and exit");
  app.require_subcommand(1);
  app.footer(
      "Environment: ActivateKOVALogger (show the library's diagnostic lines), RollBackMappingVersion\n"
      "(write version 11), IPLX_ACTIVATE_MAPPING_COMPRESSION (write envelopes), DONOTUSE_ENABLEKSSGEN\n"
      "(allow stamp computation). Run kova-mapping COMMAND --help for a command's options.");

  CheckOptions check;
  CLI::App* checkCommand =
      app.add_subcommand("check", "Read each document and print one line: ok with what it holds, or the error");
  checkCommand->add_option("FILE", check.files, "Mapping documents")->required();
  checkCommand->add_flag("--json", check.json, "One JSON record a document (NDJSON), unreadable files included");
  AddOutput(*checkCommand, check.output);
  checkCommand->footer("Exit status: 0 when every document reads, 1 otherwise, 2 on a usage error.");

  DumpOptions dump;
  CLI::App* dumpCommand =
      app.add_subcommand("dump", "Print the table of a document as the library dumps it, then its custom data");
  dumpCommand->add_option("FILE", dump.file, "Mapping document")->required();
  dumpCommand->add_flag("--json", dump.json, "One JSON record: the check's fields and the table");
  AddOutput(*dumpCommand, dump.output);
  dumpCommand->footer("Exit status: 0 when the document reads, 1 otherwise (what was read is dumped).");

  ConvertOptions convert;
  CLI::App* convertCommand =
      app.add_subcommand("convert", "Read a document of any version and write it in the current version");
  convertCommand->add_option("FILE", convert.file, "Mapping document, plain or enveloped")->required();
  AddOutput(*convertCommand, convert.output);
  CLI::Option* compressOption =
      convertCommand->add_flag("--compress", convert.compress, "Write the compressed envelope");
  CLI::Option* plainOption = convertCommand->add_flag(
      "--plain", convert.plain, "Write plain JSON even when IPLX_ACTIVATE_MAPPING_COMPRESSION is set");
  compressOption->excludes(plainOption);

  EnvelopeOptions pack;
  CLI::App* packCommand = app.add_subcommand("pack", "Wrap any text in the compressed envelope");
  packCommand->add_option("FILE", pack.file, "Text to wrap (not checked)")->required();
  AddOutput(*packCommand, pack.output);

  EnvelopeOptions unpack;
  CLI::App* unpackCommand = app.add_subcommand("unpack", "Print the text held by a compressed envelope");
  unpackCommand->add_option("FILE", unpack.file, "Envelope")->required();
  AddOutput(*unpackCommand, unpack.output);

  StampOptions stamp;
  CLI::App* stampCommand =
      app.add_subcommand("stamp", "Compute the synchro stamp of attribute values (needs DONOTUSE_ENABLEKSSGEN)");
  stampCommand->add_option("ATTRS", stamp.file, "JSON object of attribute names and values")->required();
  CLI::Option* namesOption = stampCommand->add_option(
      "--names", stamp.names, "Stamp only these attributes, read from a platform object made of the file");
  namesOption->option_text("a,b,c");
  stampCommand->add_flag("--text", stamp.text, "Print the stamp text (what is digested) instead of the stamp");
  stampCommand->add_flag("--json", stamp.json, "One JSON record: file, stamp and stamp text");
  AddOutput(*stampCommand, stamp.output);
  stampCommand->footer(
      "Values: \"text\" string, 42 integer (32 bits), 2.5 real, true/false boolean, null unset string,\n"
      "[...] list, {\"time\": SECONDS}, {\"enum\": N}, {\"unset\": "
      "\"string\"|\"integer\"|\"real\"|\"boolean\"|\"time\"}.");

  CesOptions ces;
  CLI::App* cesCommand = app.add_subcommand("ces", "Print the stamp derived from a CE stamp (V0KSS:...)");
  cesCommand->add_option("CESTAMP", ces.ceStamp, "CE stamp text, e.g. \"CESv1(x'0A1B')\"")->required();
  AddOutput(*cesCommand, ces.output);

  DiffOptions diff;
  CLI::App* diffCommand =
      app.add_subcommand("diff", "List the references and instances added, removed, moved and changed");
  diffCommand->add_option("OLD", diff.oldFile, "Earlier mapping document")->required();
  diffCommand->add_option("NEW", diff.newFile, "Later mapping document")->required();
  CLI::Option* diffFormat =
      diffCommand
          ->add_option("--format", diff.format,
                       "text: one line a change and a summary (default); dot: both tables as a Graphviz graph, "
                       "the changes coloured")
          ->check(CLI::IsMember({"text", "dot"}))
          ->option_text("text|dot");
  diffCommand->add_flag("--json", diff.json, "One JSON record a change, then a summary record (NDJSON)")
      ->excludes(diffFormat);
  AddOutput(*diffCommand, diff.output);
  diffCommand->footer("Exit status: 0 when the tables are equal, 1 when they differ, 2 on an error.");

  TreeOptions tree;
  CLI::App* treeCommand = app.add_subcommand(
      "tree", "Show the product structure: each reference, its instances, what each instance instantiates");
  treeCommand->add_option("FILE", tree.file, "Mapping document")->required();
  treeCommand->add_option("--format", tree.format, "text: an indented tree (default); dot: a Graphviz graph")
      ->check(CLI::IsMember({"text", "dot"}))
      ->option_text("text|dot");
  treeCommand->add_flag("--ascii", tree.ascii, "Draw the text tree with plain ASCII characters");
  treeCommand
      ->add_option("--max-depth", tree.maxDepth,
                   "Levels of instances shown below the top of each tree (default " +
                       std::to_string(kDefaultTreeDepth) + ", at most " + std::to_string(kMaxTreeDepth) + ")")
      ->check(CLI::Range(0, kMaxTreeDepth))
      ->option_text("N");
  AddOutput(*treeCommand, tree.output);
  treeCommand->footer(
      "Marks: root, local, absent (no such reference), unreached (not under the root), cycle, see above\n"
      "(instances listed earlier), depth limit. Exit status: 0 when the document reads, 1 otherwise.");

  AuditOptions audit;
  CLI::App* auditCommand = app.add_subcommand(
      "audit", "Check many documents in parallel (files, directories, - for a list of paths) and summarise");
  auditCommand
      ->add_option("PATH", audit.paths, "Documents, directories (walked recursively), or - for paths on standard input")
      ->required();
  auditCommand
      ->add_option("--glob", audit.globs, "Names of the files taken from directories (default *.json and *.envelope)")
      ->option_text("PATTERN");
  auditCommand->add_option("-j,--jobs", audit.jobs, "Threads (default: one a core)")->check(CLI::Range(1, 1024));
  auditCommand->add_flag("--json", audit.json, "One JSON record a document, then a summary record (NDJSON)");
  auditCommand->add_flag("--stamps", audit.stamps, "Also report the objects whose stored stamp is not in a known form");
  auditCommand->add_flag("--progress,!--no-progress", audit.progress,
                         "Show a progress bar on standard error (default: when it is a terminal)");
  auditCommand
      ->add_option("--max-size", audit.maxSize,
                   "Files larger than this many bytes are reported, not read (default 512 MiB)")
      ->option_text("BYTES");
  AddOutput(*auditCommand, audit.output);
  auditCommand->footer("Exit status: 0 when every document reads, 1 otherwise, 2 on a usage error.");

  DriftOptions drift;
  CLI::App* driftCommand = app.add_subcommand("drift",
                                              "Tell which objects are out of sync: stored stamps against current "
                                              "attribute values (needs DONOTUSE_ENABLEKSSGEN)");
  driftCommand->add_option("DOC", drift.document, "Mapping document")->required();
  driftCommand
      ->add_option("ATTRIBUTES", drift.attributes,
                   "NDJSON, one {\"kova_id\": ..., \"attributes\": {...}} a line (- for standard input)")
      ->required();
  driftCommand->add_flag("--json", drift.json, "One JSON record an object, then a summary record (NDJSON)");
  AddOutput(*driftCommand, drift.output);
  driftCommand->footer(
      "States: in-sync, stale, no-attributes, no-stamp, not-comparable, unknown-id.\n"
      "Exit status: 0 when every attribute line names an object in sync, 1 otherwise, 2 on an error.");

  GenerateOptions generate;
  std::int64_t seed = 1;
  CLI::App* generateCommand =
      app.add_subcommand("generate", "Write a valid synthetic document (the same seed gives the same document)");
  generateCommand->add_option("--references", generate.references, "Number of references (the first is the root)")
      ->required()
      ->check(CLI::Range(std::int64_t{0}, std::int64_t{std::numeric_limits<std::int32_t>::max()}));
  generateCommand->add_option("--instances", generate.instances, "Number of instances under each reference")
      ->required()
      ->check(CLI::Range(std::int64_t{0}, std::int64_t{std::numeric_limits<std::int32_t>::max()}));
  generateCommand->add_option("--version", generate.version, "Document version, 6 to 12 (default: the current version)")
      ->check(CLI::Range(6, 12));
  generateCommand->add_option("--seed", seed, "Seed of the random numbers (default 1)")
      ->check(CLI::Range(std::int64_t{0}, std::int64_t{std::numeric_limits<std::uint32_t>::max()}));
  generateCommand->add_flag("--compress", generate.compress, "Write the compressed envelope");
  AddOutput(*generateCommand, generate.output);

  SchemaOptions schema;
  CLI::App* schemaCommand =
      app.add_subcommand("schema", "Print the JSON Schema (draft 2020-12) of mapping documents of a version");
  schemaCommand->add_option("VERSION", schema.version, "Document version, 6 to 12")
      ->required()
      ->check(CLI::Validator([](const std::string& text) { return SchemaVersionProblem(text); }, "6..12"));
  AddOutput(*schemaCommand, schema.output);
  schemaCommand->footer("Exit status: 0 on success, 1 when the output cannot be written, 2 on a usage error.");

  // Words before the command: an unknown option or a word that names no command would otherwise
  // be reported as a missing command.
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "-h" || word == "--help" || word == "--version") continue;
    if (!word.empty() && word.front() == '-') {
      PrintError("unknown option \"" + word + "\" (run kova-mapping --help)");
      return kUsageError;
    }
    bool known = false;
    for (const CLI::App* command : app.get_subcommands({})) known = known || command->get_name() == word;
    if (!known) {
      PrintError("unknown command \"" + word + "\" (run kova-mapping --help)");
      return kUsageError;
    }
    break;
  }

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help, --version
    std::string help = "kova-mapping";
    for (const CLI::App* command : app.get_subcommands()) help += " " + command->get_name();
    const bool noCommand = app.get_subcommands().empty() && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const std::string reason = noCommand ? "a command is required" : error.what();
    PrintError(reason + " (run " + help + " --help)");
    return kUsageError;
  }

  const int errorStatus = diffCommand->parsed() || driftCommand->parsed() ? 2 : 1;
  try {
    if (checkCommand->parsed()) return RunCheck(check);
    if (dumpCommand->parsed()) return RunDump(dump);
    if (convertCommand->parsed()) return RunConvert(convert);
    if (packCommand->parsed()) return RunPack(pack);
    if (unpackCommand->parsed()) return RunUnpack(unpack);
    if (stampCommand->parsed()) {
      stamp.namesGiven = namesOption->count() > 0;
      return RunStamp(stamp);
    }
    if (cesCommand->parsed()) return RunCes(ces);
    if (diffCommand->parsed()) return RunDiff(diff);
    if (treeCommand->parsed()) return RunTree(tree);
    if (auditCommand->parsed()) return RunAudit(audit);
    if (driftCommand->parsed()) return RunDrift(drift);
    if (generateCommand->parsed()) {
      generate.seed = static_cast<std::uint32_t>(seed);
      return RunGenerate(generate);
    }
    if (schemaCommand->parsed()) return RunSchema(schema);
  } catch (const ToolError& error) {
    PrintError(error.what());
    return errorStatus;
  } catch (const std::exception& error) {
    PrintError(DescribeLibraryException(error));
    return errorStatus;
  } catch (...) {
    PrintError("unexpected failure");
    return errorStatus;
  }
  return errorStatus;
}

}  // namespace

int main(int argc, char** argv) {
  // A closed pipe is a write error like any other, reported on one line.
  std::signal(SIGPIPE, SIG_IGN);
  // Run reports the failures of the commands with their own exit status; a failure before a
  // command runs (memory exhausted while the command line is set up) is reported here.
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    PrintError(DescribeLibraryException(error));
  } catch (...) {
    PrintError("unexpected failure");
  }
  return 1;
}
