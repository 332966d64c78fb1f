# What every target is compiled with. `kor_options(target)` applies it, `kor_test_options(target)` for tests.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Programs and their modules land side by side, so that the host finds the component without being told.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# What one checkout has compiled serves another, too: paths are told to the compiler from where it runs.
find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
endif()

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

add_library(kor_flags INTERFACE)
target_compile_options(kor_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_compile_definitions(kor_flags INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
target_link_libraries(kor_flags INTERFACE Threads::Threads)

if(KOR_SANITIZE)
  target_compile_options(kor_flags INTERFACE -fsanitize=${KOR_SANITIZE} -fno-omit-frame-pointer -O1
                                             -fno-sanitize-recover=all)
  target_link_options(kor_flags INTERFACE -fsanitize=${KOR_SANITIZE})
  target_compile_definitions(kor_flags INTERFACE KOR_SANITIZED=1)
  # A module in the component's style is one vtable and many hosts: types are compared by name, and the
  # type of an object made in another module cannot be seen here.
  if(KOR_SANITIZE MATCHES "undefined")
    target_compile_options(kor_flags INTERFACE -fno-sanitize=vptr)
  endif()
endif()

if(KOR_FUZZ)
  # clang counts sign conversions among -Wconversion, the project's compiler does not.
  target_compile_options(kor_flags INTERFACE -fsanitize=fuzzer-no-link -Wno-sign-conversion)
endif()

function(kor_options target)
  target_link_libraries(${target} PRIVATE kor_flags sdk)
endfunction()

# Of what only tests run. It is compiled far more often than it runs, and takes half the time so.
function(kor_test_options target)
  kor_options(${target})
  target_compile_options(${target} PRIVATE -O0 -g1)
endfunction()
