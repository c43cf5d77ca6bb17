#include "platform/JsonLoad.h"

#include <memory>
#include <new>

#include "platform/JsonLoadTokens.h"
#include "platform/JsonWorkspace.h"

namespace kova::json {

HRESULT LoadDocument(std::string_view text, std::shared_ptr<Node>& root) {
  text = WithoutByteOrderMark(text);
  try {
    auto doc = std::make_shared<Document>(NodeKind::Object);
    if (!TrimBlanks(text).empty()) {
      if (text.size() > simdjson::SIMDJSON_MAXSIZE_BYTES) return E_FAIL;
      WorkspaceLease work(text.size());
      const std::string_view padded = work->Pad(text);
      simdjson::ondemand::parser* tokens = work->Tokens(padded.size());
      if (tokens == nullptr) return E_FAIL;
      if (!BuildFromTokens(*tokens, padded, *doc)) return ZAN_E_INVALIDDATA;
    }
    Node* top = &doc->root;
    root = std::shared_ptr<Node>(std::move(doc), top);
    return S_OK;
  } catch (const std::bad_alloc&) {
    return E_FAIL;
  }
}

}  // namespace kova::json
