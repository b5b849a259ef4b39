# `docs`: the reference of the public headers, in the build's docs/html. A warning is an error.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  list(TRANSFORM IRMCORE_PUBLIC_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE doc_headers)
  list(JOIN doc_headers " " doc_headers)
  configure_file(${PROJECT_SOURCE_DIR}/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
  add_custom_target(docs COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
                    COMMENT "Reference" VERBATIM)
endif()
