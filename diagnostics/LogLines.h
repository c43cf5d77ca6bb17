// How the library's own diagnostic lines reach the standard output and the captures of the
// emitting thread (internal to the library).
//
// Every line the library emits has a kind, known where it is emitted:
//  - kReason: says why an operation failed; delivered to every capture.
//  - kDetail: progress and service lines (the envelope's sizes, the stamp service); delivered to
//    the captures that want everything.
//  - kBulky: a whole document, a table dump or the envelope's whole text; delivered like kDetail,
//    and only built when BulkyLinesWanted() says someone will receive it.
#ifndef KOVA_DIAGNOSTICS_LOGLINES_H_
#define KOVA_DIAGNOSTICS_LOGLINES_H_

#include <KOVAMappingServices/ZANUnicodeString.h>

namespace kova::diagnostics {

enum class LineKind : unsigned char { kReason, kDetail, kBulky };

// Whether a bulky line would reach anyone: the environment switch is set, or a capture of this
// thread wants every line. Implies KOVALogger::IsActive().
bool BulkyLinesWanted();

// Emits one line: to the standard output when the environment switch is set, and to the captures
// of this thread that want it. Callers test KOVALogger::IsActive() first, as for KOVALogger::log.
void Emit(LineKind kind, const ZANUnicodeString& message, const ZANUnicodeString& context);

}  // namespace kova::diagnostics

#endif  // KOVA_DIAGNOSTICS_LOGLINES_H_
