// KOVALogger: the library's diagnostic channel.
//
// Callers test IsActive() first and call log only when it is true; log itself prints whenever it
// is called. A line is "[PrdKOVALog]", then "[context]" when the context is not empty, then the
// message, written to the standard output with a newline and flushed.
//
// A host can also take the lines of its own thread's calls through the API instead of the
// standard output: see KOVALogCapture.h. While a capture is alive on a thread, IsActive() is true
// on that thread and log hands the line to the capture, printing it as well only when
// "ActivateKOVALogger" is set.
//
// Thread safety: IsActive and log may be called from any thread; the lines of one thread go to that
// thread's captures only. ToString reads the object it dumps, which counts as a use of it (a table
// and its objects are used by one thread at a time, KOVAMappingTable.h); it returns a new text.
#ifndef KOVAMAPPINGSERVICES_KOVALOGGER_H_
#define KOVAMAPPINGSERVICES_KOVALOGGER_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

class KOVAMappingInstance;
class KOVAMappingReference;
class KOVAMappingTable;

class KOVA_EXPORT KOVALogger {
 public:
  KOVALogger() = default;
  ~KOVALogger() = default;
  KOVALogger(const KOVALogger&) = default;
  KOVALogger& operator=(const KOVALogger&) = default;

  // Whether "ActivateKOVALogger" existed in the environment at the first call (any value; the
  // answer is kept for the life of the process), or a KOVALogCapture is alive on this thread.
  // Safe from any thread.
  static bool IsActive();
  // Prints one diagnostic line (to this thread's captures instead, when there are any and the
  // environment switch is not set).
  static void log(ZANUnicodeString message, ZANUnicodeString context);

  // One-line dump of an instance, ending in a newline.
  static ZANUnicodeString ToString(KOVAMappingInstance& instance);
  // Dump of a reference: its line, then its instances block when it has instances.
  static ZANUnicodeString ToString(KOVAMappingReference& reference);
  // Dump of a table: version line, references block, closing brace.
  static ZANUnicodeString ToString(KOVAMappingTable& table);
};

#endif  // KOVAMAPPINGSERVICES_KOVALOGGER_H_
