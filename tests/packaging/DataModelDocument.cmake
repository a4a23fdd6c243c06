# docs/data-model.md is what the definitions say today.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)
run(printed ${GENERATOR} markdown ${WORK}/data-model.md)
execute_process(COMMAND diff -u ${SOURCE}/docs/data-model.md ${WORK}/data-model.md
    OUTPUT_VARIABLE difference RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "docs/data-model.md is not what the definitions say; run script/data-model.\n${difference}")
endif()
