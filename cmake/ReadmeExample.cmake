# pkgcore_write_readme_example(<readme> <output>)
#
# Writes the C++ block of the README, of which there is one, so that what readers copy is what is tested. Configuring again
# after a change of the README is the business of CMAKE_CONFIGURE_DEPENDS, which is set here.
function(pkgcore_write_readme_example readme output)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${readme}")
  file(READ "${readme}" text)
  string(REGEX MATCHALL "\n```cpp" openings "${text}")
  list(LENGTH openings count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "${readme} has ${count} C++ blocks; one is compiled and run")
  endif()
  string(REGEX REPLACE ".*\n```cpp[^\n]*\n" "" code "${text}")
  string(FIND "${code}" "\n```" length)
  math(EXPR length "${length} + 1")
  string(SUBSTRING "${code}" 0 ${length} code)
  file(CONFIGURE OUTPUT "${output}" CONTENT "${code}" @ONLY)
endfunction()
