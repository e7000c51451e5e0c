# What every target of the project is compiled with, and the presets' sanitizers.

include(CheckCXXCompilerFlag)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(SGBK_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize=")
option(SGBK_UNSIGNED_CHAR "Build with char unsigned" OFF)
option(SGBK_WERROR "Treat warnings as errors" OFF)

add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow>")
if(SGBK_WERROR)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Werror>)
endif()
if(SGBK_UNSIGNED_CHAR)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-funsigned-char>)
endif()
if(SGBK_SANITIZE)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fsanitize=${SGBK_SANITIZE}>
                      $<$<COMPILE_LANGUAGE:CXX>:-fno-sanitize-recover=all>
                      $<$<COMPILE_LANGUAGE:CXX>:-fno-omit-frame-pointer>)
  add_link_options(-fsanitize=${SGBK_SANITIZE})
endif()

# Binaries must not depend on the folder they were built in.
add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}=."
                    "-ffile-prefix-map=${PROJECT_BINARY_DIR}=.")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# On common Intel processors a jump that touches a 32-byte boundary is slow, which makes the speed
# of a loop an accident of where it lands.
check_cxx_compiler_flag(-mbranches-within-32B-boundaries SGBK_CLANG_ALIGNS_BRANCHES)
check_cxx_compiler_flag(-Wa,-mbranches-within-32B-boundaries SGBK_GAS_ALIGNS_BRANCHES)
if(SGBK_CLANG_ALIGNS_BRANCHES)
  set(SGBK_BRANCH_ALIGNMENT -mbranches-within-32B-boundaries)
elseif(SGBK_GAS_ALIGNS_BRANCHES)
  set(SGBK_BRANCH_ALIGNMENT -Wa,-mbranches-within-32B-boundaries)
endif()
