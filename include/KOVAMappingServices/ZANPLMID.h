// Identifiers of objects stored by the PLM platform: values (copies are independent), used like
// any value from one thread at a time, or read from several.
#ifndef KOVAMAPPINGSERVICES_ZANPLMID_H_
#define KOVAMAPPINGSERVICES_ZANPLMID_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <utility>

// Any platform identifier, reduced to its logical id text.
class KOVA_EXPORT ZANPLMID_Any {
 public:
  ZANPLMID_Any() = default;
  explicit ZANPLMID_Any(ZANUnicodeString logicalId) : logicalId_(std::move(logicalId)) {}
  // The text of the identifier.
  ZANUnicodeString ToString() const { return logicalId_; }

 private:
  ZANUnicodeString logicalId_;
};

// A simple platform identifier: one logical id.
class KOVA_EXPORT ZANPLMID_Simple {
 public:
  ZANPLMID_Simple() = default;
  explicit ZANPLMID_Simple(ZANUnicodeString logicalId) : logicalId_(std::move(logicalId)) {}
  ZANPLMID_Any GetLogicalId() const { return ZANPLMID_Any(logicalId_); }

 private:
  ZANUnicodeString logicalId_;
};

#endif  // KOVAMAPPINGSERVICES_ZANPLMID_H_
