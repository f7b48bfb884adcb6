// A unit of debug data that is written by hand, for instructions with lines that not every compiler gives: 0 stands for
// none. It is compiled without debug data of its own. By DWARF 4, sections 6.2.4 (lines), 7.5 (units and abbreviations).
asm(R"(
  .text
  .globl s_firstPlace, s_placeOfLine, s_placeOfNoLine, s_otherPlaceOfNoLine, s_placeOfOtherLine
s_firstPlace: nop
s_placeOfLine: nop
s_placeOfNoLine: nop
s_otherPlaceOfNoLine: nop
s_placeOfOtherLine: nop
.LbehindPlaces:

  .section .debug_abbrev, "", @progbits
.LmadeUpAbbreviations:
  .uleb128 1, 0x11  # a unit
  .byte 0           # without children
  .uleb128 0x03, 0x08, 0x11, 0x01, 0x12, 0x07, 0x10, 0x17  # name, first and last place, lines
  .uleb128 0, 0, 0

  .section .debug_info, "", @progbits
  .long .LendOfUnit - .LbeginOfUnit
.LbeginOfUnit:
  .short 4
  .long .LmadeUpAbbreviations
  .byte 8
  .uleb128 1
  .asciz "MadeUpLines.cpp"
  .quad s_firstPlace, .LbehindPlaces - s_firstPlace
  .long .LmadeUpLines
.LendOfUnit:

  .section .debug_line, "", @progbits
.LmadeUpLines:
  .long .LendOfLines - .LbeginOfLines
.LbeginOfLines:
  .short 4
  .long .LbeginOfProgram - .LbeginOfHeader
.LbeginOfHeader:
  .byte 1, 1, 1, 0, 1, 13
  .byte 0, 1, 1, 1, 1, 0, 0, 0, 1, 0, 0, 1
  .byte 0                    # no folders
  .asciz "MadeUpLines.cpp"   # the only file
  .byte 0, 0, 0, 0

  .macro row line_change  # and on to the next instruction
  .byte 3
  .sleb128 \line_change
  .byte 1, 2, 1
  .endm
.LbeginOfProgram:
  .byte 0, 9, 2
  .quad s_firstPlace
  row -1
  row 111
  row -111
  row 0
  row 222
  .byte 0, 1, 1
.LendOfLines:
  .text
)");
