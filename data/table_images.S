// The four table images as read-only data. .incbin rather than the linker's binary-file mode, which
// would put them into writable data, give the symbols no size and ask for an executable stack.

        .macro table_image symbol, file
        .global \symbol
        .type \symbol, @object
        .balign 64
\symbol:
        .incbin "\file"
        .size \symbol, . - \symbol
        .endm

        .section .rodata, "a", @progbits
        table_image _binary_data_big52sgbk_ctb_start, "big52sgbk.ctb"
        table_image _binary_data_gbkt2s_ctb_start, "gbkt2s.ctb"
        table_image _binary_data_uc2sgbk_ctb_start, "uc2sgbk.ctb"
        table_image _binary_data_gbk2big5_ctb_start, SGBK_GBK2BIG5_IMAGE

        .section .note.GNU-stack, "", @progbits
