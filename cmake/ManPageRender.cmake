# Renders a Markdown manual into a manual page with pandoc, at build time (cmake -P):
#   cmake -DPANDOC=... -DINPUT=page.md -DOUTPUT=page.1 -DFILTER=ManPage.lua -DTITLE=name -DSECTION=1
#         -DFOOTER="Project 1.0" -DHEADER="User Commands" -P ManPageRender.cmake
# The page's date is that of SOURCE_DATE_EPOCH when it is set (reproducible builds), otherwise the
# day the Markdown file was last changed, so rebuilding an unchanged page gives the same bytes.
# Pandoc's warnings fail the build: a page that pandoc had to guess at is not shipped.
cmake_minimum_required(VERSION 3.25)

foreach(var PANDOC INPUT OUTPUT FILTER TITLE SECTION FOOTER HEADER)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "ManPageRender.cmake: ${var} is not set")
  endif()
endforeach()

if(DEFINED ENV{SOURCE_DATE_EPOCH})
  string(TIMESTAMP date "%Y-%m-%d" UTC)  # string(TIMESTAMP) follows SOURCE_DATE_EPOCH
else()
  file(TIMESTAMP "${INPUT}" date "%Y-%m-%d" UTC)
endif()

# -smart: "--option" in headings and text stays two hyphens instead of becoming a dash.
execute_process(
  COMMAND "${PANDOC}" --standalone --from markdown-smart --to man
          --lua-filter "${FILTER}"
          --metadata "title=${TITLE}" --metadata "section=${SECTION}" --metadata "date=${date}"
          --metadata "footer=${FOOTER}" --metadata "header=${HEADER}"
          --output "${OUTPUT}.tmp" "${INPUT}"
  RESULT_VARIABLE status
  ERROR_VARIABLE errors)
if(NOT status EQUAL 0 OR NOT errors STREQUAL "")
  file(REMOVE "${OUTPUT}.tmp")
  message(FATAL_ERROR "pandoc could not render ${INPUT} (exit status ${status}):\n${errors}")
endif()
file(RENAME "${OUTPUT}.tmp" "${OUTPUT}")
