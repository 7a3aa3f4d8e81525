# OpenBLAS built without threads. Sets OpenBLASSerial_LIBRARY and OpenBLASSerial_DIRECTORY, the folder for the run path:
# builds with threads carry the same library name, and only the path tells them apart.
find_library(OpenBLASSerial_LIBRARY NAMES openblas
  PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} /usr/lib/x86_64-linux-gnu /usr/lib64 /usr/lib
  PATH_SUFFIXES openblas-serial NO_DEFAULT_PATH
  DOC "The serial build of OpenBLAS (Debian: libopenblas-serial-dev)")
if(OpenBLASSerial_LIBRARY)
  get_filename_component(OpenBLASSerial_DIRECTORY ${OpenBLASSerial_LIBRARY} DIRECTORY)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(OpenBLASSerial REQUIRED_VARS OpenBLASSerial_LIBRARY)
mark_as_advanced(OpenBLASSerial_LIBRARY)
