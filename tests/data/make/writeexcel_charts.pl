#!/usr/bin/perl
# Makes the fixture that libspreadsheet-writeexcel-perl writes. Run it in tests/data.
use strict;
use warnings;
use Spreadsheet::WriteExcel;

my $book = Spreadsheet::WriteExcel->new('writeexcel-charts.xls');
my $chart_sheet = $book->add_chart(type => 'line', name => 'Chart1');
my $data = $book->add_worksheet('data');
my $notes = $book->add_worksheet('notes');
my $day = $book->add_format(num_format => 'dd/mm/yyyy');
my $gray = $book->add_format(bg_color => 'gray');

$data->write_row('A1', ['plate', 'well', 'Delta OD']);
$data->write_row('A2', [1, 'A1', 0.5]);
$data->write_row('A3', [1, "\x{3b1}1", 1.25]);
$data->write_date_time('D2', '2002-12-03T', $day);
$data->write_formula('D3', '=C2&" OD"', undef, '0.5 OD');
$data->write_formula('E3', '=C2+C3', undef, 1.75);
$data->write_blank('H9', $gray);
my $chart = $book->add_chart(type => 'column', embedded => 1);
$chart->add_series(values => '=data!$C$2:$C$3');
$data->insert_chart('F2', $chart);
$chart_sheet->add_series(values => '=data!$C$2:$C$3');
$notes->write('B2', 'hidden');
$notes->hide();
$data->activate();
$book->close();
