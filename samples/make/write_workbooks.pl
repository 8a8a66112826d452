#!/usr/bin/perl
# Writes the workbooks described on standard input (see writers.py) with Spreadsheet::WriteExcel.
use strict;
use warnings;
use JSON::PP;
use Spreadsheet::WriteExcel;

my %errors = (0 => '#NULL!', 7 => '#DIV/0!', 15 => '#VALUE!', 23 => '#REF!', 29 => '#NAME?', 36 => '#NUM!',
    42 => '#N/A');

local $/;
for my $description (@{ decode_json(<STDIN>) }) {
    my ($path, $sheets) = @$description;
    utf8::encode($path);
    my $book = Spreadsheet::WriteExcel->new($path) or die "$path: $!";
    my $date = $book->add_format(num_format => 'm/d/yyyy h:mm');
    for my $sheet (@$sheets) {
        my ($name, $rows) = @$sheet;
        my $worksheet = $book->add_worksheet($name);
        for my $row (0 .. $#$rows) {
            my $cells = $rows->[$row];
            for my $column (0 .. $#$cells) {
                my ($kind, $value) = @{ $cells->[$column] };
                if    ($kind eq 'number')  { $worksheet->write_number($row, $column, $value) }
                elsif ($kind eq 'date')    { $worksheet->write_number($row, $column, $value, $date) }
                elsif ($kind eq 'text')    { $worksheet->write_string($row, $column, $value) }
                elsif ($kind eq 'boolean') {
                    my $result = $value ? 'TRUE' : 'FALSE';
                    $worksheet->write_formula($row, $column, "=$result", undef, $result);
                }
                elsif ($kind eq 'error') {
                    $worksheet->write_formula($row, $column, '=1/0', undef, $errors{$value});
                }
                elsif ($kind eq 'formula') {
                    $worksheet->write_formula($row, $column, "=$value->[0]", undef, $value->[1]);
                }
            }
        }
    }
    $book->close();
}
