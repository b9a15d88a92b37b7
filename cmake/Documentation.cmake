# What scripts/docs makes the API reference from: the headers that are installed, as input of the Doxyfile. Two kinds of them
# are no part of the interface:
# - the interfaces of COM, which Microsoft describes and which are the host's own on Windows;
# - the bodies of the conformance tests and what they share: who uses the suite names none of it.
set(undescribed "platform/com/HostlessIStream\\.hpp$|testing/conformance/(.*Conformance|ConformanceTest|Needs)\\.hpp$")

set(headers "")
foreach(target IN ITEMS pkgcore pkgcore_sqlite)
  if(TARGET ${target})
    list(APPEND headers "$<TARGET_PROPERTY:${target},HEADER_SET>")
  endif()
endforeach()
file(
  GENERATE
  OUTPUT "${PROJECT_BINARY_DIR}/docs/Doxyfile.input"
  CONTENT "PROJECT_NUMBER = ${PROJECT_VERSION}\nINPUT = ${PROJECT_SOURCE_DIR}/docs/api/namespaces.dox $<JOIN:$<FILTER:${headers},EXCLUDE,${undescribed}>, >\n")
