#!/usr/bin/perl
# Prints the cells of workbooks as Spreadsheet::ParseExcel sees them, as JSON (see readers.py).
use strict;
use warnings;
use JSON::PP;
use Spreadsheet::ParseExcel;

my @books;
for my $path (@ARGV) {
    my $parser = Spreadsheet::ParseExcel->new();
    my $book = $parser->parse($path) or die "$path: " . $parser->error() . "\n";
    my @sheets;
    for my $sheet ($book->worksheets()) {
        my @cells;
        my ($first_row, $last_row) = $sheet->row_range();
        my ($first_column, $last_column) = $sheet->col_range();
        for my $row ($first_row .. $last_row) {
            for my $column ($first_column .. $last_column) {
                my $cell = $sheet->get_cell($row, $column) or next;
                my $value = $cell->type() eq 'Text' ? $cell->value() : $cell->unformatted();
                next if !defined $value || $value eq '';
                push @cells, [$row + 1, $column + 1, $cell->type(), "$value"];
            }
        }
        push @sheets, [$sheet->get_name(), \@cells];
    }
    push @books, \@sheets;
}
print encode_json(\@books);
