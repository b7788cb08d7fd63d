# The desktop: what it stands on, the shape of a folder of windows, and the shape of their tests.

if(NOT QUILLCAST_DESKTOP)
  function(quillcast_desktop_folder)
  endfunction()
  return()
endif()

find_package(Qt6 6.4 COMPONENTS Widgets Network Svg PrintSupport WebChannel WebEngineWidgets)
if(NOT Qt6_FOUND)
  message(FATAL_ERROR "Qt 6 with its web engine was not found. Install it with: apt-get install qt6-base-dev qt6-svg-dev "
                      "qt6-webengine-dev; or build without the desktop: -DQUILLCAST_DESKTOP=OFF")
endif()

# A room of the desktop: every .cpp in it becomes quillcast_desktop_NAME. RESOURCES are found at :/NAME/.
function(quillcast_desktop_folder name)
  cmake_parse_arguments(ARG "" "" "USES;RESOURCES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  quillcast_sources(together ${name} ${sources})
  qt_add_library(quillcast_desktop_${name} STATIC ${together} ${headers})
  set_target_properties(quillcast_desktop_${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(quillcast_desktop_${name} PUBLIC quillcast_flags Qt6::Widgets ${ARG_USES})
  if(ARG_RESOURCES)
    qt_add_resources(quillcast_desktop_${name} ${name}_resources PREFIX /${name} FILES ${ARG_RESOURCES})
  endif()
endfunction()

# A test of windows: tests/desktop/NAME_test.cpp, run without a display.
function(quillcast_gui_test name)
  cmake_parse_arguments(ARG "" "" "USES" ${ARGN})
  add_executable(test_gui_${name} desktop/${name}_test.cpp)
  set_target_properties(test_gui_${name} PROPERTIES AUTOMOC ON)
  target_include_directories(test_gui_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(test_gui_${name} PRIVATE
    QUILLCAST_TEST_PROGRAM_FOLDER="${CMAKE_BINARY_DIR}/share/quillcast")
  target_link_libraries(test_gui_${name} PRIVATE ${ARG_USES} Qt6::Test)
  quillcast_test_build(test_gui_${name})
  add_test(NAME gui_${name} COMMAND test_gui_${name} -nocrashhandler)
  set_tests_properties(gui_${name} PROPERTIES TIMEOUT ${QUILLCAST_HANGS_AFTER} RESOURCE_LOCK clipboard ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen;QTWEBENGINE_CHROMIUM_FLAGS=--no-sandbox --disable-gpu;LC_ALL=C.UTF-8;QT_LOGGING_RULES=js=false")
endfunction()
