// Loading JSON text into a value tree (internal).
#ifndef KOVA_PLATFORM_JSONLOAD_H_
#define KOVA_PLATFORM_JSONLOAD_H_

#include <KOVAMappingServices/ZANStatus.h>

#include <memory>
#include <string_view>

#include "platform/JsonNode.h"

namespace kova::json {

// Parses UTF-8 JSON text into a new document and sets root to its root node.
//  - one leading byte order mark is skipped; a text that is then empty or blank gives an empty
//    object;
//  - malformed text gives ZAN_E_INVALIDDATA, memory exhaustion E_FAIL; root is then unchanged.
HRESULT LoadDocument(std::string_view text, std::shared_ptr<Node>& root);

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONLOAD_H_
