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

# orvex_add_translations(<target> <qrc name> <ts files...>)
#
# Compiles the catalogues with lrelease at build time and builds them into the
# target's resources under :/translations/<name>.qm; the .qm files are also
# installed, for tools and translators. 'make translations' at the top runs
# lupdate on the .ts files.
function(orvex_add_translations target qrc_name)
  set(ts_files ${ARGN})
  set_source_files_properties(${ts_files} PROPERTIES OUTPUT_LOCATION ${CMAKE_CURRENT_BINARY_DIR}/translations)
  qt5_add_translation(qm_files ${ts_files})
  set(entries "")
  foreach(qm ${qm_files})
    get_filename_component(qm_name ${qm} NAME)
    string(APPEND entries "    <file alias=\"translations/${qm_name}\">${qm}</file>\n")
  endforeach()
  set(qrc ${CMAKE_CURRENT_BINARY_DIR}/${qrc_name}.qrc)
  file(WRITE ${qrc} "<!DOCTYPE RCC>\n<RCC version=\"1.0\">\n  <qresource prefix=\"/\">\n${entries}  </qresource>\n</RCC>\n")
  target_sources(${target} PRIVATE ${qrc} ${qm_files})
  install(FILES ${qm_files} DESTINATION ${ORVEX_INSTALL_TRANSLATIONSDIR})
endfunction()
