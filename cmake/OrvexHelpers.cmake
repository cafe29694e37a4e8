# orvex_add_test(NAME <name> LABEL <area> SOURCES <files...> [LIBS <targets...>] [GUI] [TIMEOUT <s>])
#
# One Qt Test executable, registered with CTest under the area's label. GUI tests
# run under xvfb-run unless a display is already there, and QtWebEngine gets the
# flags it needs when the suite runs as root.
function(orvex_add_test)
  cmake_parse_arguments(T "GUI" "NAME;LABEL;TIMEOUT" "SOURCES;LIBS" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE Qt5::Test orvextestsupport ${T_LIBS})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 300)
  endif()
  if(T_GUI)
    add_test(NAME ${T_NAME} COMMAND ${CMAKE_SOURCE_DIR}/tests/run-gui-test.sh $<TARGET_FILE:${T_NAME}>)
  else()
    add_test(NAME ${T_NAME} COMMAND ${T_NAME})
    set_property(TEST ${T_NAME} APPEND PROPERTY ENVIRONMENT QT_QPA_PLATFORM=offscreen)
  endif()
  set_tests_properties(${T_NAME} PROPERTIES LABELS "${T_LABEL}" TIMEOUT ${T_TIMEOUT})
endfunction()
