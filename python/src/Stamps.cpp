// Stamps: computation from attribute values (the attribute file's JSON form, made by the Python
// side from a dict, read by the same code as kova-mapping stamp), and the stamp text forms.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>

#include <cstdint>
#include <string>
#include <utility>

#include "Attributes.h"
#include "Binding.h"
#include "StampComputation.h"
#include "Status.h"

namespace kova::python {

namespace {

py::object ComputeStamp(const std::string& attributesJson, bool wantText) {
  if (!tool::StampComputationEnabled()) RaiseError(tool::kStampComputationDisabled, E_FAIL, {});
  tool::StampComputation result;
  try {
    py::gil_scoped_release released;
    const tool::AttributeMap attributes = tool::ReadAttributes(attributesJson, "attributes");
    result = tool::ComputeStamp(attributes, nullptr, wantText);
  } catch (const tool::ToolError& error) {
    RaiseToolError(error);
  }
  if (ZANFailed(result.status)) RaiseError("stamp not computed", result.status, {result.ErrorText()});
  if (!wantText) return py::cast(result.stamp);
  if (!result.text) RaiseError("the stamp service did not show its stamp text", E_FAIL, {});
  return py::str(*result.text);
}

}  // namespace

void BindStamps(py::module_& module) {
  module.def("_compute_stamp", &ComputeStamp, py::arg("attributes_json"), py::arg("text"));
  module.def(
      "versioned",
      [](const ZANUnicodeString& stamp, std::int32_t version) {
        return KOVAKSSVersioning::ComputeKSSWithVersion(stamp, version);
      },
      py::arg("stamp"), py::arg("version"), "\"V<version>:\" followed by the stamp.");
  module.def(
      "stamp_version", [](const ZANUnicodeString& text) { return KOVAKSSVersioning::GetKSSVersion(text); },
      py::arg("text"),
      "The version a stamp text carries: the first digit of a \"V<digits>:\" prefix (\"V12:abc\" gives 1), 0 for "
      "\"V0KSS:\", -1 when it carries none.");
  module.def(
      "strip_version", [](const ZANUnicodeString& text) { return KOVAKSSVersioning::GetKSSFromKSSWithVersion(text); },
      py::arg("text"),
      "The stamp without its version prefix: \"V<digits>:\" loses its first three characters (\"V12:abc\" gives "
      "\":abc\"), \"V0KSS:\" is removed, any other text is kept.");
  module.def(
      "from_ce_stamp",
      [](const ZANUnicodeString& ceStamp) {
        ZANUnicodeString stamp;
        const HRESULT status = KOVASynchroStampServices::GetKSSFromCES(ceStamp, stamp);
        if (ZANFailed(status)) RaiseError("stamp not derived", status, {tool::StatusMeaning(status)});
        return stamp;
      },
      py::arg("ce"), "The synchro stamp derived from a CE stamp (\"CESv1(x'...')\"), with its \"V0KSS:\" prefix.");
}

}  // namespace kova::python
