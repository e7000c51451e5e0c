# Stops the build when an image differs from what data/images.sha256 says of it.
#   cmake -DEXPECTED=images.sha256 -DIMAGES=DIR -P check_images.cmake

file(STRINGS "${EXPECTED}" lines REGEX "^[0-9a-f]")
file(GLOB images RELATIVE "${IMAGES}" "${IMAGES}/*.ctb")
set(found "")
foreach(image IN LISTS images)
  file(SHA256 "${IMAGES}/${image}" hash)
  list(APPEND found "${hash}  ${image}")
endforeach()

list(SORT lines)
list(SORT found)
if(NOT found STREQUAL lines)
  list(JOIN found "\n" found)
  message(FATAL_ERROR "The table images are not those of ${EXPECTED}.\n"
    "If the change is wanted, review what it does to the text that users convert, then accept it:\n"
    "  (cd ${IMAGES} && sha256sum *.ctb) > ${EXPECTED}\n")
endif()
