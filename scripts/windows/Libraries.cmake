# The libraries for Windows whose own CMake files are for the build machine (scripts/windows/libraries).
add_library(Boost::context STATIC IMPORTED)
set_target_properties(Boost::context PROPERTIES
  IMPORTED_LOCATION ${ZEB_WINDOWS_LIBRARIES}/lib/libboost_context.a
  INTERFACE_INCLUDE_DIRECTORIES ${ZEB_WINDOWS_LIBRARIES}/include)
add_library(Boost::json STATIC IMPORTED)
set_target_properties(Boost::json PROPERTIES
  IMPORTED_LOCATION ${ZEB_WINDOWS_LIBRARIES}/lib/libboost_json.a
  INTERFACE_INCLUDE_DIRECTORIES ${ZEB_WINDOWS_LIBRARIES}/include)
# Windows 10 is the oldest that is served: its services know UTF-8.
add_compile_definitions(_WIN32_WINNT=0x0A00 UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
add_library(CLI11::CLI11 INTERFACE IMPORTED)
set_target_properties(CLI11::CLI11 PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${ZEB_WINDOWS_LIBRARIES}/include)
