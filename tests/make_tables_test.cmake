# The table generator names the line that it cannot use, and the check of the images the entries that
# changed.
#   cmake -DMAKE_TABLES=... -DDATA=data -DIMAGES=... -DWORK=scratch folder -P make_tables_test.cmake

function(expect_failure message)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result ERROR_VARIABLE errors)
  if(result EQUAL 0 OR NOT errors MATCHES "${message}")
    message(SEND_ERROR "expected a failure with \"${message}\", got ${result}: ${errors}")
  endif()
endfunction()

# With these lines, "|" for a tab, in the place of the others.
function(expect_rejected file lines message)
  string(REPLACE "|" "\t" lines "${lines}")
  file(COPY ${DATA}/mappings DESTINATION ${WORK})
  file(WRITE ${WORK}/mappings/${file} "# A remark\n${lines}\n")
  expect_failure("${message}" ${MAKE_TABLES} ${WORK}/mappings ${WORK})
endfunction()

expect_rejected(gbk.tsv "81ZZ|U+4E02" "gbk.tsv:2: not a hexadecimal number: 81ZZ")
expect_rejected(gbk.tsv "814|U+4E02" "gbk.tsv:2: not a two-byte code")
expect_rejected(gbk.tsv "AAA1|U+E000" "gbk.tsv:2: no code of this encoding")
expect_rejected(big5.tsv "A440|一\nA440|乙" "big5.tsv:3: given twice")
expect_rejected(simplified.tsv "U+5000|一二" "simplified.tsv:2: not one ideograph")
expect_rejected(choices.tsv "simplfied|一|一|a reason" "choices.tsv:2: unknown scope")
expect_rejected(choices.tsv "simplified|一|一|" "choices.tsv:2: a choice needs its reason")
expect_rejected(choices.tsv "simplified|一|一" "choices.tsv:2: fields are missing")
expect_rejected(unicode_forms.tsv "U+0378|U+0379\nU+0379|U+0378" "in a circle at U\\+037")
expect_failure("gbk.tsv: cannot be opened" ${MAKE_TABLES} ${WORK}/nowhere ${WORK})

file(COPY ${DATA}/mappings DESTINATION ${WORK})
file(APPEND ${WORK}/mappings/choices.tsv "to_big5\tU+2609\tU+25CF\ta reason\n")
execute_process(COMMAND ${MAKE_TABLES} ${WORK}/mappings ${WORK})
expect_failure("gbk2big5.ctb, entries changed: 1\n  A891: A1F3 -> A1B4\n.*are not those of" ${CMAKE_COMMAND}
  -DEXPECTED=${DATA}/images.sha256 -DIMAGES=${WORK} -DACCEPTED=${IMAGES} -P ${DATA}/check_images.cmake)
