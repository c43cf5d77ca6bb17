#include "platform/JsonLoad.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "platform/JsonLoadSteps.h"
#include "platform/JsonWorkspace.h"

namespace kova::json {

namespace {

HRESULT Parse(Workspace& work, std::string_view text, std::shared_ptr<Document>& out) {
  simdjson::error_code error = simdjson::SUCCESS;
  const HRESULT parsed = work.ParseDom(text, true, error);
  if (ZANFailed(parsed)) return parsed;
  const std::string_view padded(work.buffer.get(), text.size());
  switch (error) {
    case simdjson::SUCCESS: {
      auto doc = std::make_shared<Document>(NodeKind::Object);
      if (BuildFromDom(work.dom.doc, padded, work.mayHoldNegativeZero, *doc) == DomBuild::Done) {
        out = std::move(doc);
        return S_OK;
      }
      break;  // a number the tape cannot give back as written
    }
    case simdjson::NUMBER_ERROR:
    case simdjson::NUMBER_OUT_OF_RANGE:
      break;  // a number beyond 64 bits or the double range, or a malformed number
    case simdjson::MEMALLOC:
    case simdjson::CAPACITY:
      return E_FAIL;
    default:
      return ZAN_E_INVALIDDATA;
  }
  simdjson::ondemand::parser* tokens = work.Tokens(padded.size());
  if (tokens == nullptr) return E_FAIL;
  auto doc = std::make_shared<Document>(NodeKind::Object);
  if (!BuildFromTokens(*tokens, padded, *doc)) return ZAN_E_INVALIDDATA;
  out = std::move(doc);
  return S_OK;
}

}  // namespace

HRESULT LoadDocument(std::string_view text, std::shared_ptr<Node>& root) {
  text = WithoutByteOrderMark(text);
  try {
    std::shared_ptr<Document> doc;
    if (TrimBlanks(text).empty()) {
      doc = std::make_shared<Document>(NodeKind::Object);
    } else {
      WorkspaceLease work(text.size());
      const HRESULT status = Parse(*work, text, doc);
      if (ZANFailed(status)) return status;
    }
    Node* top = &doc->root;
    root = std::shared_ptr<Node>(std::move(doc), top);
    return S_OK;
  } catch (const std::bad_alloc&) {
    return E_FAIL;
  }
}

}  // namespace kova::json
