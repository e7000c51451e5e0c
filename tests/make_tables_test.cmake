# The table generator names the line that it cannot use, and the check of the images the entries that
# changed.
#   cmake -DMAKE_TABLES=... -DDATA=data -DIMAGES=... -DWORK=scratch folder -P make_tables_test.cmake

function(expect_failure message)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result ERROR_VARIABLE errors)
  if(result EQUAL 0 OR NOT errors MATCHES "${message}")
    message(SEND_ERROR "expected a failure with \"${message}\", got ${result}: ${errors}")
  endif()
endfunction()

function(copy_mappings)
  file(REMOVE_RECURSE ${WORK})
  file(COPY ${DATA}/mappings DESTINATION ${WORK})
endfunction()

function(expect_rejected file line message)
  copy_mappings()
  string(REPLACE "|" "\t" line "${line}")
  file(APPEND ${WORK}/mappings/${file} "${line}\n")
  file(STRINGS ${WORK}/mappings/${file} lines ENCODING UTF-8)
  list(LENGTH lines number)
  expect_failure("${file}:${number}: ${message}" ${MAKE_TABLES} ${WORK}/mappings ${WORK})
endfunction()

expect_rejected(gbk.tsv "81ZZ|U+4E02" "not a hexadecimal number: 81ZZ")
expect_rejected(gbk.tsv "814|U+4E02" "not a two-byte code")
expect_rejected(gbk.tsv "AAA1|U+E000" "no code of this encoding")
expect_rejected(gbk.tsv "8140|U+4E02" "given twice")
expect_rejected(big5.tsv "A47F|U+4E02" "no code of this encoding")
expect_rejected(simplified.tsv "U+5000" "fields are missing")
expect_rejected(simplified.tsv "U+5000|一二" "not one ideograph")
expect_rejected(choices.tsv "simplfied|一|一|a reason" "unknown scope")
expect_rejected(choices.tsv "simplified|一|一|" "a choice needs its reason")

copy_mappings()
file(APPEND ${WORK}/mappings/unicode_forms.tsv "U+0378\tU+0379\nU+0379\tU+0378\n")
expect_failure("forms go round in a circle at U\\+037" ${MAKE_TABLES} ${WORK}/mappings ${WORK})

file(REMOVE ${WORK}/mappings/gbk.tsv)
expect_failure("gbk.tsv: cannot be opened" ${MAKE_TABLES} ${WORK}/mappings ${WORK})

copy_mappings()
file(APPEND ${WORK}/mappings/choices.tsv "to_big5\tU+2609\tU+25CF\ta reason\n")
execute_process(COMMAND ${MAKE_TABLES} ${WORK}/mappings ${WORK})
expect_failure("gbk2big5.ctb, entries changed: 1\n  A891: A1F3 -> A1B4\n.*are not those of" ${CMAKE_COMMAND}
  -DEXPECTED=${DATA}/images.sha256 -DIMAGES=${WORK} -DACCEPTED=${IMAGES} -P ${DATA}/check_images.cmake)
