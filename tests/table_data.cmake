# The table images: what must hold of them, and the programs that make and check them.

find_package(ICU REQUIRED COMPONENTS uc i18n)

add_executable(table_data_test ${PROJECT_SOURCE_DIR}/tests/table_data_test.cpp)
target_include_directories(table_data_test PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(table_data_test
  PRIVATE sgbk::tables GTest::gtest_main ICU::uc ICU::i18n)
target_compile_definitions(table_data_test PRIVATE
  SGBK_IMAGES="${PROJECT_BINARY_DIR}/data/images"
  SGBK_TRADITIONAL_FIRST=$<BOOL:${SGBK_TRADITIONAL_FIRST}>
  SGBK_KNOWN_DIFFERENCES="${PROJECT_SOURCE_DIR}/data/known_differences.tsv")
gtest_discover_tests(table_data_test DISCOVERY_TIMEOUT 60)

add_test(NAME make_tables COMMAND ${CMAKE_COMMAND}
  -DMAKE_TABLES=$<TARGET_FILE:sgbk-make-tables>
  -DDATA=${PROJECT_SOURCE_DIR}/data
  -DIMAGES=${PROJECT_BINARY_DIR}/data/images
  -DWORK=${CMAKE_CURRENT_BINARY_DIR}/make_tables
  -P ${PROJECT_SOURCE_DIR}/tests/make_tables_test.cmake)
