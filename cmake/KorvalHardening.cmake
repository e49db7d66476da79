# SPDX-License-Identifier: MIT
# What makes an error in memory a clean end instead of somebody else's way in. What a compiler or its linker does not
# have is left out; tests/packaging shows what a built program really has.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
include(CheckLinkerFlag)

check_pie_supported()

foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
  string(MAKE_C_IDENTIFIER "KORVAL_HAS${flag}" has)
  check_cxx_compiler_flag(${flag} ${has})
  if(${has})
    target_compile_options(korval_build_flags INTERFACE ${flag})
  endif()
endforeach()

foreach(flag -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  string(MAKE_C_IDENTIFIER "KORVAL_HAS${flag}" has)
  check_linker_flag(CXX ${flag} ${has})
  if(${has})
    target_link_options(korval_build_flags INTERFACE ${flag})
  endif()
endforeach()

# Works on optimised code only.
target_compile_options(korval_build_flags INTERFACE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>)
target_compile_definitions(korval_build_flags INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
