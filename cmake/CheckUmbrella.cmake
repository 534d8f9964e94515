# Fails when a public header of the library is missing from the umbrella header <vort/vort.h>.
# Run as: cmake -DSOURCE_DIR=<repo> -P CheckUmbrella.cmake
file(READ ${SOURCE_DIR}/include/vort/vort.h umbrella)
file(GLOB_RECURSE headers RELATIVE ${SOURCE_DIR}/include ${SOURCE_DIR}/include/vort/*/*.h)
set(missing "")
foreach(header IN LISTS headers)
    string(FIND "${umbrella}" "#include <${header}>" found)
    if(found EQUAL -1)
        list(APPEND missing ${header})
    endif()
endforeach()
if(missing)
    message(FATAL_ERROR "vort/vort.h does not include: ${missing}")
endif()
