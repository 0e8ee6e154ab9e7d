// Numbers of the resources: dialogs, their controls, the toolbar and its commands. Read by the compiler and by
// the resource compiler, so plain defines only. Controls of different dialogs may share a number.
#pragma once

// clang-format off
// Dialogs and toolbar.
#define RES_SELECTION_DIALOG       101
#define RES_QUANTITY_KEYPAD        202
#define RES_SELECTED_PARTS_DIALOG  250
#define RES_FILTER_TOOLBAR         212

// Size in dialog units, title, font: the same font everywhere.
#define RES_SELECTION_SIZE         542, 350
#define RES_SELECTION_TITLE        "Partkeep Read"
#define RES_KEYPAD_SIZE            171, 164
#define RES_KEYPAD_TITLE           "Input Quantity"
#define RES_SELECTED_PARTS_SIZE    247, 114
#define RES_SELECTED_PARTS_TITLE   "Selected Parts"
#define RES_FONT_NAME              "Tahoma"
#define RES_FONT_POINTS            8

// Every dialog.
#define RES_OK                     1
#define RES_CANCEL                 2

// Selection dialog.
#define RES_LOAD                   201
#define RES_UNIT                   202
#define RES_PART_NAME              203
#define RES_COMMENT                204
#define RES_UNIT_CAPTION           206
#define RES_COMMENT_CAPTION        207
#define RES_PART_NAME_CAPTION      208
#define RES_ADD                    210
#define RES_PICTURE                211
#define RES_CAPTION_2D             212
#define RES_CAPTION_3D             213
#define RES_BROWSER                215 /* made at run time */
#define RES_ASK_QUANTITY           217
#define RES_IMAGE_PANEL            65535 /* made at run time, twice */

// Extent of the picture control before its first picture, in 1/100 mm.
#define RES_PICTURE_CLASS          "{DBE2F81A-E533-4E67-A6CD-A05F41A9627E}"
#define RES_PICTURE_EXTENT         4419, 4471

// Quantity keypad.
#define RES_QUANTITY_CAPTION       218
#define RES_QUANTITY               219
#define RES_DIGIT_1                220
#define RES_DIGIT_2                221
#define RES_DIGIT_3                222
#define RES_DIGIT_4                223
#define RES_DIGIT_5                224
#define RES_DIGIT_6                225
#define RES_DIGIT_7                226
#define RES_DIGIT_8                227
#define RES_DIGIT_9                228
#define RES_DIGIT_00               229
#define RES_DIGIT_0                230

// Selected Parts dialog.
#define RES_PART_LIST              233
#define RES_REMOVE                 247
#define RES_PARTS_COLLECTED        248 /* made at run time */
#define RES_CHANGE_QUANTITY        259

// Commands of the toolbar; the numbers of their tool tips too.
#define RES_FILTER_PART            32773
#define RES_FILTER_NCT             32774
#define RES_FILTER_LASER           32775
#define RES_FILTER_MARVEN          32776

// No control's: what a double click on a part in the browser asks for.
#define RES_CHOOSE_PART            32800

#define RES_TOOL_SIZE              16, 15
// clang-format on
