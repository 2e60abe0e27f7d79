# renamed_archive(LIBRARY SYMS OUTPUT TARGET): a copy of a static library with symbols renamed, as the
# list SYMS has them (old name, new name), so that its calls end elsewhere. Whoever links OUTPUT
# depends on TARGET.
function(renamed_archive library syms output target)
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${CMAKE_OBJCOPY} --redefine-syms=${syms} $<TARGET_FILE:${library}> ${output}
    DEPENDS ${library} ${syms}
    VERBATIM)
  add_custom_target(${target} DEPENDS ${output})
endfunction()
