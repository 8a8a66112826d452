/* Reads every cell of every sheet of .xls workbooks with freexl and does nothing with them:
 *
 *   freexl_read FILE...
 */
#include <freexl.h>
#include <stdio.h>

static int read_sheet(const void* workbook, unsigned short sheet, unsigned long* cells) {
  unsigned int rows;
  unsigned short columns;
  if (freexl_select_active_worksheet(workbook, sheet) != FREEXL_OK ||
      freexl_worksheet_dimensions(workbook, &rows, &columns) != FREEXL_OK)
    return 0;
  for (unsigned int row = 0; row < rows; ++row) {
    for (unsigned short column = 0; column < columns; ++column) {
      FreeXL_CellValue value;
      if (freexl_get_cell_value(workbook, row, column, &value) != FREEXL_OK) return 0;
      *cells += value.type != FREEXL_CELL_NULL;
    }
  }
  return 1;
}

int main(int argc, char** argv) {
  unsigned long cells = 0;
  for (int i = 1; i < argc; ++i) {
    const void* workbook;
    unsigned int sheets;
    if (freexl_open(argv[i], &workbook) != FREEXL_OK ||
        freexl_get_info(workbook, FREEXL_BIFF_SHEET_COUNT, &sheets) != FREEXL_OK) {
      fprintf(stderr, "%s: cannot be read\n", argv[i]);
      return 1;
    }
    for (unsigned short sheet = 0; sheet < sheets; ++sheet) {
      if (!read_sheet(workbook, sheet, &cells)) {
        fprintf(stderr, "%s: sheet %d cannot be read\n", argv[i], sheet + 1);
        return 1;
      }
    }
    freexl_close(workbook);
  }
  printf("%lu cells\n", cells);
  return 0;
}
