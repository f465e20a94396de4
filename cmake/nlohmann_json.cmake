# nlohmann::json for both builds. The header-only package lives in the host's
# /usr/include, which the cross compiler must not search as a whole, so the
# Windows build sees it through a folder that holds only this one package.
if(WIN32)
  find_path(VARNEL_NLOHMANN_DIR nlohmann/json.hpp PATHS /usr/include NO_DEFAULT_PATH
    NO_CMAKE_FIND_ROOT_PATH)
  if(NOT VARNEL_NLOHMANN_DIR)
    message(FATAL_ERROR "nlohmann/json.hpp not found: apt-get install nlohmann-json3-dev")
  endif()
  set(varnel_json_include ${CMAKE_BINARY_DIR}/third_party/include)
  file(MAKE_DIRECTORY ${varnel_json_include})
  if(NOT EXISTS ${varnel_json_include}/nlohmann)
    file(CREATE_LINK ${VARNEL_NLOHMANN_DIR}/nlohmann ${varnel_json_include}/nlohmann SYMBOLIC)
  endif()
  add_library(varnel_json INTERFACE)
  target_include_directories(varnel_json SYSTEM INTERFACE ${varnel_json_include})
else()
  find_package(nlohmann_json 3 REQUIRED)
  add_library(varnel_json INTERFACE)
  target_link_libraries(varnel_json INTERFACE nlohmann_json::nlohmann_json)
endif()
