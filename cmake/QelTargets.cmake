# Shared compile settings for every target of the project.
function(qel_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(QEL_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
endfunction()

# Collects the sources of a subsystem folder (non-recursive).
function(qel_collect_sources out)
  set(files)
  foreach(dir ${ARGN})
    file(GLOB found CONFIGURE_DEPENDS
      ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.cpp
      ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.h)
    list(APPEND files ${found})
  endforeach()
  set(${out} ${files} PARENT_SCOPE)
endfunction()
