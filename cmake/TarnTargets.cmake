# The library's targets, and the two functions by which a room adds to them:
#   tarn_sources(FILE...)   sources of the calling folder; their instruction set follows from the file name
#   tarn_exports(FILE)      a list of exported names, one a line; # starts a comment

set(warnings -Wall -Wextra -Wpointer-arith -Wcast-qual -Wundef -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wextra-semi>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  list(APPEND warnings -Wno-restrict) # GCC 12 warns of every std::string + "text" here (its bug 105651)
endif()
if(TARN_WERROR)
  list(APPEND warnings -Werror)
endif()
add_library(tarn_warnings INTERFACE)
target_compile_options(tarn_warnings INTERFACE ${warnings})

if(TARN_SANITIZE)
  add_compile_options(-fsanitize=${TARN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TARN_SANITIZE})
endif()
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.) # same bytes from any folder

add_library(tarn_objects OBJECT)
set_target_properties(tarn_objects PROPERTIES
  POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
target_include_directories(tarn_objects PUBLIC ${PROJECT_SOURCE_DIR}/include PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(tarn_objects PRIVATE tarn_warnings)
# Arithmetic on bit patterns wraps on purpose. The instruction set is stated last, so that a distributor's -march or -mavx cannot widen it.
target_compile_options(tarn_objects PRIVATE
  -fno-exceptions -fno-rtti -fno-threadsafe-statics -fno-fast-math -ffp-contract=off -fno-math-errno -fwrapv
  $<$<CXX_COMPILER_ID:GNU>:-fno-ipa-icf> -march=x86-64 -mno-avx -mno-ssse3 -msse3)

function(tarn_sources)
  foreach(file IN LISTS ARGN)
    set(path ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    target_sources(tarn_objects PRIVATE ${path})
    if(file MATCHES "\\.sse41\\.cpp$")
      set(isa -msse4.1 -DTARN_ISA=sse41)
    elseif(file MATCHES "\\.aes\\.cpp$")
      set(isa -maes -DTARN_ISA=aes)
    elseif(file MATCHES "\\.rdrand\\.cpp$")
      set(isa -mrdrnd -DTARN_ISA=rdrand)
    else()
      set(isa -DTARN_ISA=sse3)
    endif()
    set_source_files_properties(${path} TARGET_DIRECTORY tarn_objects PROPERTIES COMPILE_OPTIONS "${isa}")
    set_property(GLOBAL APPEND PROPERTY TARN_SOURCES ${path})
    set_property(GLOBAL PROPERTY TARN_ISA_${path} "${isa}")
  endforeach()
endfunction()

# GCC orders the instructions of a long polynomial one vector after the other, and the chains of a block wait for one
# window of the processor; scheduled before registers are given out, they advance side by side. It pays where a formula
# is little but a polynomial (sLn HA gains 28 percent) and costs a few percent elsewhere, so a file asks for it.
function(tarn_interleave file)
  set(path ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set_property(SOURCE ${path} TARGET_DIRECTORY tarn_objects APPEND PROPERTY COMPILE_OPTIONS -fschedule-insns -fsched-pressure)
  endif()
endfunction()

# The service layer and the vector room once more, as an archive built with further options: for the tests of bits.
function(tarn_kernels_at_level target)
  get_property(all GLOBAL PROPERTY TARN_SOURCES)
  set(sources "")
  foreach(path IN LISTS all)
    file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${path}) # the path above may hold what an expression would not take
    if(name MATCHES "^(service|vector)/" AND NOT name MATCHES "linear_algebra")
      list(APPEND sources ${path})
      get_property(isa GLOBAL PROPERTY TARN_ISA_${path})
      set_source_files_properties(${path} PROPERTIES COMPILE_OPTIONS "${isa}")
    endif()
  endforeach()
  add_library(${target} STATIC ${sources})
  get_target_property(options tarn_objects COMPILE_OPTIONS)
  target_compile_options(${target} PRIVATE ${options} ${ARGN})
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/include PRIVATE ${PROJECT_SOURCE_DIR})
endfunction()

function(tarn_exports file)
  set_property(GLOBAL APPEND PROPERTY TARN_EXPORT_LISTS ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${CMAKE_CURRENT_SOURCE_DIR}/${file})
endfunction()

# The version script, with every public name spelled out; then libtarn.so and libtarn.a from the same objects.
function(tarn_link_libraries)
  get_property(lists GLOBAL PROPERTY TARN_EXPORT_LISTS)
  set(names "")
  foreach(list IN LISTS lists)
    file(STRINGS ${list} lines REGEX "^[A-Za-z_]")
    list(APPEND names ${lines})
  endforeach()
  list(SORT names)
  set(map ${PROJECT_BINARY_DIR}/tarn.map)
  list(JOIN names ";\n    " body)
  file(CONFIGURE OUTPUT ${map} CONTENT "TARN_0.1 {\n  global:\n    @body@;\n  local: *;\n};\n" @ONLY)

  add_library(tarn SHARED)
  add_library(tarn_static STATIC)
  foreach(target tarn tarn_static)
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:tarn_objects>)
    target_include_directories(${target} INTERFACE
      $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME tarn LINKER_LANGUAGE C)
  endforeach()
  set_target_properties(tarn PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0 LINK_DEPENDS ${map})
  target_link_options(tarn PRIVATE -Wl,--version-script=${map} -Wl,--no-undefined-version -Wl,-Bsymbolic-functions
    -Wl,--as-needed -Wl,-z,relro,-z,now)
  if(NOT TARN_SANITIZE) # whose run time stands in the program, not in the library
    target_link_options(tarn PRIVATE -Wl,-z,defs)
  endif()
  # Linear algebra comes from the serial build of OpenBLAS. Builds with threads bear the same name, so the library
  # carries the way to the serial one.
  find_package(OpenBLASSerial REQUIRED)
  target_link_libraries(tarn PRIVATE ${OpenBLASSerial_LIBRARY})
  target_link_libraries(tarn_static INTERFACE ${OpenBLASSerial_LIBRARY})
  target_link_options(tarn_static INTERFACE LINKER:-rpath,${OpenBLASSerial_DIRECTORY}) # so does a program of the archive
  set_target_properties(tarn PROPERTIES BUILD_RPATH ${OpenBLASSerial_DIRECTORY}
    INSTALL_RPATH ${OpenBLASSerial_DIRECTORY})
  add_library(Tarn::tarn ALIAS tarn)
  add_library(Tarn::static ALIAS tarn_static)
endfunction()
