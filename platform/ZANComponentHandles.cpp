#include <KOVAMappingServices/ZANComponentHandles.h>

#include <string>

ZANNullVarError::ZANNullVarError(const char* handleName)
    : std::runtime_error(std::string("null handle used: ") + (handleName != nullptr ? handleName : "")),
      handleName_(handleName != nullptr ? handleName : "") {}

ZANNullVarError::~ZANNullVarError() = default;

void ZANBaseUnknown_var::ThrowErrorNullVar(const char* handleName) { throw ZANNullVarError(handleName); }
