# Warnings for the project's own targets only; consumers of the installed package inherit none.
function(vort_target_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Wcast-qual -Wmissing-declarations)
    if(VORT_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
