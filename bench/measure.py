#!/usr/bin/python3
"""Times whole processes side by side, round by round, and prints the medians (see run)."""

import argparse
import glob
import os
import statistics
import subprocess
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
KEYS = ["compound ID", "cell plate #", "cell plate wells ##"]
COLUMNS = ["cell plate #", "cell plate wells ##", "compound ID", "compound #", "Date", "day_num"]


def call(command):
    """Wall and processor time in seconds and peak memory in MiB of one process. What it prints is thrown away."""
    with tempfile.TemporaryFile() as told:
        start = time.perf_counter()
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=told)
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            told.seek(0)
            raise SystemExit("%s failed: %s" % (command[0], told.read().decode()))
    return seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


class Timed:
    def __init__(self, name, command, rounds):
        self.name, self.command, self.rounds = name, command, rounds
        self.seconds, self.work, self.peak = [], [], 0

    def run(self):
        seconds, work, peak = call(self.command)
        self.seconds.append(seconds)
        self.work.append(work)
        self.peak = max(self.peak, peak)

    def medians(self):
        return statistics.median(self.seconds), statistics.median(self.work)

    def line(self):
        seconds, work = self.medians()
        return "%-37s %8.3f s median of %d (%.3f to %.3f), processors %.3f s, peak %.1f MiB" % (
            self.name, seconds, len(self.seconds), min(self.seconds), max(self.seconds), work, self.peak)


class Table:
    """The processes that are timed, by name, and the ratios of their medians that are printed."""

    def __init__(self, bin_dir, rounds):
        self.bin_dir, self.rounds = bin_dir, rounds
        self.rows, self.ratios = {}, []

    def add(self, name, command, rounds=None):
        self.rows[name] = Timed(name, command, rounds or self.rounds)

    def compare(self, label, one, other, goal=None):
        self.ratios.append((label, one, other, goal))

    def program(self, name):
        return os.path.join(self.bin_dir, name)

    def measure(self):
        for one in self.rows.values():
            if one.rounds == self.rounds:
                call(one.command)  # brings the files into memory
        for number in range(self.rounds):
            for one in self.rows.values():
                if number < one.rounds:
                    one.run()

    def show(self):
        for one in self.rows.values():
            print(one.line())
        for label, one, other, goal in self.ratios:
            wall, work = (ours / theirs for ours, theirs in zip(self.rows[one].medians(), self.rows[other].medians()))
            print("%-46s %8.2f, processors %.2f%s" % (label, wall, work, "" if goal is None else "   goal %.2f" % goal))


def conversion(program, folder, output):
    command = program + ["-q", "-d", "Delta OD", "-o", output]
    for option, names in (("-k", KEYS), ("-c", COLUMNS)):
        for name in names:
            command += [option, name]
    return command + [folder]


def cells(bin_dir, workbook):
    return subprocess.run([bin_dir + "/workbook-dump", workbook], check=True, stdout=subprocess.PIPE).stdout


def cell_count(bin_dir, workbook):
    """Keeps none of them: what is large in this process would count as the peak of those that it starts."""
    with subprocess.Popen([bin_dir + "/workbook-dump", workbook], stdout=subprocess.PIPE) as process:
        return sum(1 for _ in process.stdout)


def add_campaigns(table, korvex, folder, script_rounds):
    script = [os.path.join(HERE, "../tests/campaign/xlrd_convert.py")]
    small, large = folder + "/small/campaign", folder + "/large/campaign"
    for jobs in (1, 2):
        table.add("korvex-convert, small, --jobs %d" % jobs,
                  conversion(korvex + ["--jobs", str(jobs)], small, folder + "/korvex.xls"))
    table.add("freexl, small, reads only",
              [table.program("freexl_read")] + sorted(glob.glob(small + "/*/*.xls")))
    table.add("xlrd and xlwt, small", conversion(script, small, folder + "/script.xls"), script_rounds)
    table.add("korvex-convert, large", conversion(korvex, large, folder + "/large.xls"), (table.rounds + 1) // 2)
    table.add("korvex-convert, large, report",
              conversion(korvex + ["--report", folder + "/large.html"], large, folder + "/large.xls"), 2)
    for jobs, goal in ((1, 1), (2, 0.65)):
        table.compare("korvex-convert, --jobs %d / freexl" % jobs, "korvex-convert, small, --jobs %d" % jobs,
                      "freexl, small, reads only", goal)
    table.compare("script / korvex-convert", "xlrd and xlwt, small", "korvex-convert, small, --jobs 2")
    table.compare("large / small, ten times the workbooks", "korvex-convert, large", "korvex-convert, small, --jobs 2")
    table.compare("report / none, large", "korvex-convert, large, report", "korvex-convert, large")


def add_packed_campaign(table, korvex, folder):
    """The small campaign as .xlsx: on one core, on two, and the bare loop over the same files."""
    packed = folder + "/packed/campaign"
    bare = "zlib and expat, 400 .xlsx"
    table.add(bare, [table.program("expat_count")] + sorted(glob.glob(packed + "/*/*.xlsx")))
    for jobs, goal in ((1, 0.6), (2, 0.35)):
        name = "korvex-convert, 400 .xlsx, --jobs %d" % jobs
        table.add(name, conversion(korvex + ["--jobs", str(jobs)], packed, folder + "/packed.xls"))
        table.compare("400 .xlsx, --jobs %d / zlib and expat" % jobs, name, bare, goal)


def add_packed_reading(table, folder, name, script_rounds, goal=None):
    """Our reading of an .xlsx workbook and the script's, once they have found the same cells."""
    workbook = "%s/%s.xlsx" % (folder, name)
    script = [os.path.join(HERE, "openpyxl_read.py"), workbook]
    found = int(subprocess.run(script, check=True, stdout=subprocess.PIPE).stdout)
    if cell_count(table.bin_dir, workbook) != found:
        raise SystemExit("%s: not the number of cells that openpyxl finds" % workbook)
    ours, theirs, bare = ("%s, %s .xlsx" % (program, name)
                          for program in ("workbook-dump", "openpyxl", "zlib and expat"))
    table.add(ours, [table.program("workbook-dump"), workbook])
    table.add(theirs, script, script_rounds)
    table.add(bare, [table.program("expat_count"), workbook])
    table.compare("workbook-dump / zlib and expat, %s .xlsx" % name, ours, bare, goal)
    table.compare("openpyxl / workbook-dump, %s .xlsx" % name, theirs, ours)


def add_tables(table, folder):
    dump = table.program("workbook-dump")
    for ending in (".xls", ".ods"):
        table.add("workbook-dump, long %s" % ending, [dump, folder + "/long" + ending])
    table.add("freexl, long .xls", [table.program("freexl_read"), folder + "/long.xls"])
    table.compare("workbook-dump / freexl, long .xls", "workbook-dump, long .xls", "freexl, long .xls", 1.5)


def add_outputs(table, korvex, folder):
    for ending in (".csv", ".xlsx"):
        table.add("korvex-convert, small, %s output" % ending,
                  conversion(korvex, folder + "/small/campaign", folder + "/output" + ending))
    table.compare(".xlsx output / .csv output", "korvex-convert, small, .xlsx output",
                  "korvex-convert, small, .csv output", 2)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("bin_dir")
    parser.add_argument("folder", help="holds what run has made")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--script-rounds", type=int, default=2)
    choices = parser.parse_args()

    folder = choices.folder
    settings = os.path.join(folder, "settings.ini")
    with open(settings, "w") as file:
        file.write("[Main Section]\nLaunch Output File=0\nSend Email on Error=0\n")
    table = Table(choices.bin_dir, choices.rounds)
    korvex = [table.program("korvex-convert"), "--settings", settings]
    add_campaigns(table, korvex, folder, choices.script_rounds)
    add_packed_campaign(table, korvex, folder)
    add_packed_reading(table, folder, "plate", choices.rounds)
    add_packed_reading(table, folder, "long", choices.script_rounds, goal=0.6)
    add_tables(table, folder)
    add_outputs(table, korvex, folder)
    table.measure()
    same = all(cells(choices.bin_dir, folder + "/korvex.xls") == cells(choices.bin_dir, folder + other)
               for other in ("/script.xls", "/packed.xls"))

    table.show()
    print("outputs of korvex-convert, of the script and from .xlsx: " +
          ("the same cells" if same else "DIFFERENT CELLS"))
    return 0 if same else 1


if __name__ == "__main__":
    raise SystemExit(main())
