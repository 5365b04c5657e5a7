# Run by ctest when it starts: makes each test of the program a test of its own, once without and
# once with the debug log. When the program cannot list them, it is the test, and fails with its
# message.
execute_process(COMMAND ${program} --gtest_list_tests
    RESULT_VARIABLE result OUTPUT_VARIABLE listing ERROR_QUIET)
set(names Transcripts.AreWellFormed)
if(result EQUAL 0)
    set(names)
    string(REPLACE "\n" ";" lines "${listing}")
    foreach(line IN LISTS lines)
        if(line MATCHES "^  ([A-Za-z0-9_]+)")
            list(APPEND names ${suite}${CMAKE_MATCH_1})
        elseif(line MATCHES "^([A-Za-z0-9_]+\\.)")
            set(suite ${CMAKE_MATCH_1})
        endif()
    endforeach()
endif()
foreach(name IN LISTS names)
    set(filter --gtest_filter=${name})
    add_test(${name} ${program} ${filter})
    add_test(${name}.debuglog ${program} ${filter})
    set_tests_properties(${name} ${name}.debuglog PROPERTIES TIMEOUT 300 LABELS library)
    set_tests_properties(${name}.debuglog PROPERTIES ENVIRONMENT VELK_TEST_DEBUGLOG=1)
endforeach()
