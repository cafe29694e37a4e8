# Resource collection of the workbench library.
#   */*.qrc               our own files under resources/ (each folder may bring a .qrc)
#   pagelibs.qrc          page libraries installed by npm, generated at configure time
#   translations.qrc      catalogues compiled by lrelease (orvex_add_translations)
set(ORVEX_RESOURCES_DIR ${CMAKE_SOURCE_DIR}/resources)
file(GLOB_RECURSE ORVEX_RESOURCE_FILES CONFIGURE_DEPENDS ${ORVEX_RESOURCES_DIR}/*.qrc)

# Page libraries: alias => file below node_modules. Extend the list when the
# page needs more; a missing file stops the configure step with a clear message.
set(ORVEX_PAGE_LIBRARIES
  "material/jquery-3.1.0.min.js=jquery/dist/jquery.min.js"
  "material/material.min.js=material-design-lite/material.min.js"
  "material/material.min.css=material-design-lite/material.min.css"
  "material/material-icons.woff2=material-icons/iconfont/material-icons.woff2"
  "material/material-icons.woff=material-icons/iconfont/material-icons.woff"
  "material/visibility_off.svg=@material-design-icons/svg/filled/visibility_off.svg"
)
set(_pagelibs_entries "")
foreach(entry ${ORVEX_PAGE_LIBRARIES})
  string(REPLACE "=" ";" fields "${entry}")
  list(GET fields 0 alias)
  list(GET fields 1 path)
  if(NOT EXISTS ${ORVEX_NODE_MODULES}/${path})
    message(FATAL_ERROR "Page library ${ORVEX_NODE_MODULES}/${path} is missing: run 'make setup' (npm ci) first.")
  endif()
  string(APPEND _pagelibs_entries "    <file alias=\"${alias}\">${ORVEX_NODE_MODULES}/${path}</file>\n")
endforeach()
# qwebchannel.js comes from the installed QtWebChannel so that it always matches the Qt in use.
set(_qwebchannel_js ${CMAKE_CURRENT_BINARY_DIR}/qwebchannel.js)
add_executable(qwebchannelcopy ${CMAKE_SOURCE_DIR}/tools/qwebchannelcopy.cpp)
set_target_properties(qwebchannelcopy PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tools)
target_link_libraries(qwebchannelcopy PRIVATE Qt5::Core Qt5::WebChannel)
add_custom_command(OUTPUT ${_qwebchannel_js}
  COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen $<TARGET_FILE:qwebchannelcopy> ${_qwebchannel_js}
  DEPENDS qwebchannelcopy
  COMMENT "Copying qwebchannel.js from QtWebChannel")
add_custom_target(orvex_qwebchannel_js DEPENDS ${_qwebchannel_js})
add_dependencies(orvexworkbench orvex_qwebchannel_js)
string(APPEND _pagelibs_entries "    <file alias=\"material/qwebchannel.js\">${_qwebchannel_js}</file>\n")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/pagelibs.qrc.in
  "<!DOCTYPE RCC>\n<RCC version=\"1.0\">\n  <qresource prefix=\"/\">\n${_pagelibs_entries}  </qresource>\n</RCC>\n")
configure_file(${CMAKE_CURRENT_BINARY_DIR}/pagelibs.qrc.in ${CMAKE_CURRENT_BINARY_DIR}/pagelibs.qrc COPYONLY)
list(APPEND ORVEX_RESOURCE_FILES ${CMAKE_CURRENT_BINARY_DIR}/pagelibs.qrc)

# The workbench's German catalogue and the English plural forms.
orvex_add_translations(orvexworkbench translations ${CMAKE_SOURCE_DIR}/translations/orvexworkbench_de.ts
  ${CMAKE_SOURCE_DIR}/translations/orvexworkbench_en.ts)
