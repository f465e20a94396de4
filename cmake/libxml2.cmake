# LibXml2::LibXml2 for both builds: the host's libxml2-dev, or on Windows the
# static library tools/build-libxml2-windows.sh cross-builds and caches.
if(WIN32)
  set(VARNEL_LIBXML2_ROOT "" CACHE PATH "Install folder of the cross-built libxml2")
  if(NOT VARNEL_LIBXML2_ROOT)
    execute_process(
      COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/../tools/build-libxml2-windows.sh --print-root
      OUTPUT_VARIABLE varnel_libxml2_guess OUTPUT_STRIP_TRAILING_WHITESPACE)
    set(VARNEL_LIBXML2_ROOT "${varnel_libxml2_guess}" CACHE PATH "" FORCE)
  endif()
  if(NOT EXISTS "${VARNEL_LIBXML2_ROOT}/lib/libxml2.a")
    message(FATAL_ERROR "No Windows libxml2 at '${VARNEL_LIBXML2_ROOT}': run tools/build-libxml2-windows.sh")
  endif()
  find_package(Threads REQUIRED)
  add_library(LibXml2::LibXml2 STATIC IMPORTED)
  set_target_properties(LibXml2::LibXml2 PROPERTIES
    IMPORTED_LOCATION "${VARNEL_LIBXML2_ROOT}/lib/libxml2.a"
    INTERFACE_INCLUDE_DIRECTORIES "${VARNEL_LIBXML2_ROOT}/include/libxml2"
    INTERFACE_COMPILE_DEFINITIONS LIBXML_STATIC
    INTERFACE_LINK_LIBRARIES "ws2_32;Threads::Threads")
else()
  find_package(LibXml2 REQUIRED)
endif()
