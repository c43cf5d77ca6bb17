// KOVALogCapture: the library's diagnostic lines, handed to the host for the calls made on its own
// thread.
//
// Without a capture, the library writes its diagnostic lines to the standard output, and only
// when "ActivateKOVALogger" was set when KOVALogger::IsActive() was first called (KOVALogger.h).
// A capture gives a host the same lines through the API instead, for the calls made on the thread
// that holds it:
//
//   KOVALogCapture capture;                       // failure reasons only
//   if (KOVAMappingParser::TranslateToMappingTable(text, owner, table) < 0) {
//     for (const std::string& reason : capture.Reasons()) std::cerr << reason << '\n';
//   }
//
// While at least one capture is alive on a thread, KOVALogger::IsActive() is true on that thread,
// so every operation emits exactly the lines, in exactly the order, that it emits with the
// environment switch set. Each line goes to the captures of the emitting thread that want it and,
// only when "ActivateKOVALogger" is set, to the standard output as well. Other threads neither see
// the lines nor have their own IsActive() changed.
//
// What a capture wants:
//  - Wants::kReasons: the lines that say why an operation failed: the document reader's messages
//    ("KOVA JSON EMPTY OR INVALID", "UNSUPPORTED VERSION ( version < 6 )", ...), one
//    "UNVALUATED MANDATORY FIELD" line per missing key, and the envelope's failure lines
//    ("COMPRESSION FAILED", "DECOMPRESSION" and the name of the decompression status). The library
//    does not build the bulky lines (the pretty-printed input or output document, the table dumps,
//    the envelope's whole text) for a thread whose captures all want reasons only, unless the
//    environment switch asks for them on the standard output.
//  - Wants::kEverything: every line, including the envelope's progress lines, the stamp service's
//    lines and the bulky ones.
// Lines that a host passes to KOVALogger::log itself count as reasons when their context is empty
// or is "UNVALUATED MANDATORY FIELD".
//
// Contracts:
//  - A capture belongs to the thread that constructs it and must be destroyed on that thread.
//    Captures nest: every capture alive on the thread receives the lines it wants, innermost
//    first. Destroy them in the reverse order of their construction (scopes do this).
//  - A sink is called synchronously, on the emitting thread, from inside the library call that
//    emits the line. It may call back into the library; the lines that such a nested call emits
//    are not passed to the sink that is running (so a sink cannot recurse into itself), but they
//    reach every other capture of the thread. A sink must not destroy its own capture.
//  - An exception thrown by a sink, or by the collecting capture when memory is exhausted,
//    propagates to the host through the library call that emitted the line.
//  - The capture owns the lines it keeps: Lines() refers to them until Clear() or the capture's
//    destruction. A sink stays the host's; the capture only refers to it.
#ifndef KOVAMAPPINGSERVICES_KOVALOGCAPTURE_H_
#define KOVAMAPPINGSERVICES_KOVALOGCAPTURE_H_

#include <KOVAMappingServices/KOVAExport.h>

#include <string>
#include <string_view>
#include <vector>

// One diagnostic line: the context ("" when the line has none) and the message, both UTF-8.
struct KOVALogLine {
  std::string context;
  std::string message;
  // Whether the line is a failure reason (see Wants::kReasons).
  bool reason = false;
};

// Receives the lines of a capture as they are emitted. The views are valid during the call only.
class KOVA_EXPORT KOVALogSink {
 public:
  virtual ~KOVALogSink();
  virtual void Receive(std::string_view context, std::string_view message, bool reason) = 0;
};

class KOVA_EXPORT KOVALogCapture {
 public:
  enum class Wants { kReasons, kEverything };

  // Keeps the lines it wants; read them with Lines() or Reasons().
  explicit KOVALogCapture(Wants wants = Wants::kReasons);
  // Passes the lines it wants to sink, which must outlive the capture; keeps nothing itself.
  KOVALogCapture(KOVALogSink& sink, Wants wants);
  ~KOVALogCapture();
  KOVALogCapture(const KOVALogCapture&) = delete;
  KOVALogCapture& operator=(const KOVALogCapture&) = delete;

  Wants wants() const { return wants_; }

  // The lines kept so far, in the order they were emitted (empty for a capture with a sink).
  const std::vector<KOVALogLine>& Lines() const { return lines_; }
  // The failure reasons kept so far, one text each: the message, or for a missing mandatory key
  // "UNVALUATED MANDATORY FIELD " followed by the key.
  std::vector<std::string> Reasons() const;
  // Forgets the lines kept so far.
  void Clear() { lines_.clear(); }

 private:
  friend struct KOVALogCaptureAccess;
  void Receive(std::string_view context, std::string_view message, bool reason);

  KOVALogSink* sink_ = nullptr;
  Wants wants_;
  std::vector<KOVALogLine> lines_;
  KOVALogCapture* outer_ = nullptr;  // the capture of this thread that was innermost before this one
  bool delivering_ = false;          // a line is being passed to the sink right now
};

#endif  // KOVAMAPPINGSERVICES_KOVALOGCAPTURE_H_
