/* What the build makes of the mapping texts for this library alone. */

  .section .note.GNU-stack, "", %progbits
  .section .rodata, "a", %progbits

.macro image name, file
  .balign 4
  .globl \name
  .hidden \name
  .type \name, %object
\name:
  .incbin "\file"
  .size \name, . - \name
  .globl \name\()_end
  .hidden \name\()_end
\name\()_end:
.endm

  image sgbk_gbk_code_points, "gbk_code_points.bin"
  image sgbk_big5_code_points, "big5_code_points.bin"
  image sgbk_traditional_first, "traditional_first.bin"
