# qvimanager_add_plugin: builds a plug-in file of QVIManager.
#
#   qvimanager_add_plugin(<target> SOURCES <file>... [OUTPUT_DIRECTORY <dir>])
#
# Makes <target>.dll, a shared object with the extension "dll" (the naming
# service loads every "*.dll" of the "plugins" folder beside the program),
# in <dir>, by default ${CMAKE_CURRENT_BINARY_DIR}/plugins. The sources only
# define components and their file-scope creators:
#
#   static Utilities::ComponentCreatorNormal<MyDriver> creator;
#
# The function adds the rest: a ComponentFactory of the plug-in's own (the
# creators register there while the file loads), the four entry points
# "PluginResolve", "PluginGetComponentDescriptors", "PluginCanUnloadDll" and
# "PluginPrepareForUnload" forwarding to it, and the link to the one
# QVIManager library that the host program loads. The file exports nothing
# else, and every symbol it needs must be found when it is linked.
#
# Available after find_package(QVIManager), and inside the QVIManager tree.

function(qvimanager_add_plugin target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT_DIRECTORY" "SOURCES")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "qvimanager_add_plugin(${target}): unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT arg_SOURCES)
    message(FATAL_ERROR "qvimanager_add_plugin(${target}): SOURCES names no file")
  endif()
  if(NOT arg_OUTPUT_DIRECTORY)
    set(arg_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/plugins")
  endif()

  add_library(${target} MODULE ${arg_SOURCES}
    "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/plugin_entry_points.cpp")
  target_link_libraries(${target} PRIVATE QVIManager::QVIManager QVIManager::ComponentFactory)
  # The generator expression keeps multi-configuration generators from
  # adding a folder per configuration: the program looks in one place.
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    SUFFIX ".dll"
    LIBRARY_OUTPUT_DIRECTORY "$<1:${arg_OUTPUT_DIRECTORY}>")
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_link_options(${target} PRIVATE
      "LINKER:--no-undefined"
      "LINKER:--version-script=${CMAKE_CURRENT_FUNCTION_LIST_DIR}/plugin_exports.map")
    set_property(TARGET ${target} APPEND PROPERTY
      LINK_DEPENDS "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/plugin_exports.map")
  endif()
endfunction()
