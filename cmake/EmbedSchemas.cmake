# Writes a C++ header holding the JSON Schemas of the mapping document, byte for byte, for the
# kova-mapping tool's schema command: the files of schemas/ stay the one source of the schemas.
#
#   cmake -DSCHEMA_DIR=<folder of mapping-document-v*.schema.json> -DOUTPUT=<header> -P EmbedSchemas.cmake
#
# Each schema becomes a raw string literal. The header is rewritten only when its text changes, so
# that an unchanged schema costs no rebuild.
cmake_minimum_required(VERSION 3.25)

if(NOT SCHEMA_DIR OR NOT OUTPUT)
  message(FATAL_ERROR "EmbedSchemas.cmake needs SCHEMA_DIR and OUTPUT")
endif()

# The delimiter of the raw string literals; a schema holding ")kova_schema_json\"" would end its
# literal early, so it is refused.
set(delimiter "kova_schema_json")
# C++ compilers are only required to take string literals of 65536 characters.
set(max_length 65000)

file(GLOB files "${SCHEMA_DIR}/mapping-document-v*.schema.json")
set(versions "")
foreach(file IN LISTS files)
  get_filename_component(name "${file}" NAME)
  if(name MATCHES "^mapping-document-v([0-9]+)\\.schema\\.json$")
    list(APPEND versions "${CMAKE_MATCH_1}")
  endif()
endforeach()
if(NOT versions)
  message(FATAL_ERROR "no mapping-document-v*.schema.json in ${SCHEMA_DIR}")
endif()
list(SORT versions COMPARE NATURAL)

set(entries "")
foreach(version IN LISTS versions)
  set(file "${SCHEMA_DIR}/mapping-document-v${version}.schema.json")
  file(READ "${file}" text)
  string(FIND "${text}" ")${delimiter}\"" clash)
  if(NOT clash EQUAL -1)
    message(FATAL_ERROR "${file} holds the text )${delimiter}\" and cannot be embedded")
  endif()
  string(LENGTH "${text}" length)
  if(length GREATER max_length)
    message(FATAL_ERROR "${file} is longer than ${max_length} bytes and cannot be embedded")
  endif()
  string(APPEND entries "    {${version}, R\"${delimiter}(${text})${delimiter}\"},\n")
endforeach()

set(header "// Generated from schemas/mapping-document-v*.schema.json by cmake/EmbedSchemas.cmake: edit the
// schemas, not this file.
#ifndef KOVA_TOOLS_KOVA_MAPPING_MAPPINGSCHEMAS_H_
#define KOVA_TOOLS_KOVA_MAPPING_MAPPINGSCHEMAS_H_

#include <string_view>

namespace kova::tool::schemas {

struct EmbeddedSchema {
  int version;
  std::string_view text;  // the file's bytes
};

// The schema of each document version, in ascending version order.
inline constexpr EmbeddedSchema kMappingDocumentSchemas[] = {
${entries}};

}  // namespace kova::tool::schemas

#endif  // KOVA_TOOLS_KOVA_MAPPING_MAPPINGSCHEMAS_H_
")

file(WRITE "${OUTPUT}.new" "${header}")
file(COPY_FILE "${OUTPUT}.new" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.new")
