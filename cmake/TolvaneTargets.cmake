# Flags every target of the project shares, and the one helper that declares a test tier.

set(TOLVANE_WARNINGS -Wall -Wextra -Werror)
set(TOLVANE_SANITIZER_FLAGS -fsanitize=address,undefined -fno-omit-frame-pointer
                            -fno-sanitize-recover=undefined)
# The optimisation AddressSanitizer is made for: its reports keep every frame, and the build
# takes a third less time than at -O2.
set(TOLVANE_SANITIZER_OPTIMIZATION -O1)

# Warnings always; AddressSanitizer and UBSan when TOLVANE_SANITIZE is on, unless the target
# is linked statically for the test kernel (NO_SANITIZE).
function(tolvane_target_defaults target)
    cmake_parse_arguments(ARG "NO_SANITIZE" "" "" ${ARGN})
    target_compile_options(${target} PRIVATE ${TOLVANE_WARNINGS})
    if(TOLVANE_SANITIZE AND NOT ARG_NO_SANITIZE)
        target_compile_options(${target} PRIVATE ${TOLVANE_SANITIZER_FLAGS}
                                                 ${TOLVANE_SANITIZER_OPTIMIZATION})
        target_link_options(${target} PRIVATE ${TOLVANE_SANITIZER_FLAGS})
    endif()
endfunction()

# tolvane_add_test(NAME n LABEL unit|app|kernel|desktop SOURCES ... [LIBS ...] [TIMEOUT s])
# GoogleTest executables get every case registered on its own; the app tier runs offscreen.
function(tolvane_add_test)
    cmake_parse_arguments(ARG "" "NAME;LABEL;TIMEOUT" "SOURCES;LIBS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 60)
    endif()
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    tolvane_target_defaults(${ARG_NAME})
    target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} GTest::gtest)
    set(env "ASAN_OPTIONS=detect_leaks=0:abort_on_error=0" "UBSAN_OPTIONS=print_stacktrace=1")
    if(ARG_LABEL STREQUAL "app")
        list(APPEND env "QT_QPA_PLATFORM=offscreen" "QT_QPA_FONTDIR=/usr/share/fonts/truetype/dejavu")
    endif()
    gtest_discover_tests(${ARG_NAME}
        DISCOVERY_TIMEOUT 60
        PROPERTIES LABELS ${ARG_LABEL} TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "${env}")
endfunction()
