#include "platform/JsonTape.h"

#include <new>

#include "platform/JsonLoadSteps.h"
#include "platform/JsonWorkspace.h"

namespace kova::json {

// The walk reads the tape as simdjson 3 lays it out.
static_assert(simdjson::SIMDJSON_VERSION_MAJOR == 3, "tape layout of simdjson 3");

TapeDocument::TapeDocument() = default;
TapeDocument::~TapeDocument() = default;

const std::size_t TapeDocument::kPadding = simdjson::SIMDJSON_PADDING;

bool TapeDocument::Parse(std::string_view text) noexcept { return ParseWith(text, false); }

bool TapeDocument::ParseInPlace(std::string_view text) noexcept { return ParseWith(text, true); }

bool TapeDocument::ParseWith(std::string_view text, bool inPlace) noexcept {
  text = WithoutByteOrderMark(text);
  if (TrimBlanks(text).empty()) return false;
  try {
    lease_ = std::make_unique<WorkspaceLease>(text.size());
    Workspace& work = **lease_;
    simdjson::error_code error = simdjson::SUCCESS;
    const HRESULT status = inPlace ? work.ParsePaddedDom(text, error) : work.ParseDom(text, false, error);
    const bool parsed = ZANSucceeded(status) && error == simdjson::SUCCESS;
    work.ReleaseLargeCopy();
    if (!parsed) {
      lease_.reset();
      return false;
    }
    words_ = work.dom.doc.tape.get();
    strings_ = work.dom.doc.string_buf.get();
    return true;
  } catch (const std::bad_alloc&) {
    lease_.reset();
    return false;
  }
}

}  // namespace kova::json
