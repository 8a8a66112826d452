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
    """Wall time in seconds and peak memory in MiB of one process."""
    with tempfile.TemporaryFile() as told:
        start = time.perf_counter()
        process = subprocess.Popen(command, stdout=told, stderr=told)
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            told.seek(0)
            raise SystemExit("%s failed: %s" % (command[0], told.read().decode()))
    return seconds, usage.ru_maxrss / 1024


class Timed:
    def __init__(self, name, command, rounds):
        self.name, self.command, self.rounds = name, command, rounds
        self.seconds, self.peak = [], 0

    def run(self):
        seconds, peak = call(self.command)
        self.seconds.append(seconds)
        self.peak = max(self.peak, peak)

    def median(self):
        return statistics.median(self.seconds)


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


def readings(bin_dir, workbook, name, rounds, script_rounds):
    """Our reading of an .xlsx workbook and the script's, once they have found the same cells."""
    script = [os.path.join(HERE, "openpyxl_read.py"), "read", workbook]
    found = int(subprocess.run(script, check=True, stdout=subprocess.PIPE).stdout)
    if cell_count(bin_dir, workbook) != found:
        raise SystemExit("%s: not the number of cells that openpyxl finds" % workbook)
    return [Timed("workbook-dump, %s .xlsx" % name, [bin_dir + "/workbook-dump", workbook], rounds),
            Timed("openpyxl, %s .xlsx" % name, script, script_rounds),
            Timed("zlib and expat, %s .xlsx" % name, [bin_dir + "/expat_count", workbook], rounds)]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("bin_dir")
    parser.add_argument("folder", help="holds the campaigns small/campaign and large/campaign")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--script-rounds", type=int, default=2)
    choices = parser.parse_args()

    folder = choices.folder
    settings = os.path.join(folder, "settings.ini")
    with open(settings, "w") as file:
        file.write("[Main Section]\nLaunch Output File=0\nSend Email on Error=0\n")
    korvex = [choices.bin_dir + "/korvex-convert", "--settings", settings]
    script = [os.path.join(HERE, "../tests/campaign/xlrd_convert.py")]
    small, large = folder + "/small/campaign", folder + "/large/campaign"
    files = sorted(glob.glob(small + "/*/*.xls"))

    timed = [
        Timed("korvex-convert, small", conversion(korvex, small, folder + "/korvex.xls"), choices.rounds),
        Timed("freexl, small, reads only", [choices.bin_dir + "/freexl_read"] + files, choices.rounds),
        Timed("xlrd and xlwt, small", conversion(script, small, folder + "/script.xls"), choices.script_rounds),
        Timed("korvex-convert, large", conversion(korvex, large, folder + "/large.xls"), (choices.rounds + 1) // 2),
        Timed("korvex-convert, large, report",
              conversion(korvex + ["--report", folder + "/large.html"], large, folder + "/large.xls"), 2),
    ]
    packed = [readings(choices.bin_dir, folder + "/plate.xlsx", "plate", choices.rounds, choices.rounds),
              readings(choices.bin_dir, folder + "/long.xlsx", "long", choices.rounds, choices.script_rounds)]
    timed += packed[0] + packed[1]
    for one in timed[:2]:
        call(one.command)  # brings the files into memory
    for number in range(choices.rounds):
        for one in timed:
            if number < one.rounds:
                one.run()
    same = cells(choices.bin_dir, folder + "/korvex.xls") == cells(choices.bin_dir, folder + "/script.xls")

    counts = {"small": len(files), "large": len(glob.glob(large + "/*/*.xls"))}
    print("small: %(small)d workbooks, large: %(large)d workbooks" % counts)
    for one in timed:
        print("%-28s %8.3f s median of %d (%.3f to %.3f), peak %.1f MiB" % (
            one.name, one.median(), len(one.seconds), min(one.seconds), max(one.seconds), one.peak))
    fast, reader, slow, many, reported = timed[:5]
    print("korvex-convert / freexl      %8.2f" % (fast.median() / reader.median()))
    print("script / korvex-convert      %8.1f" % (slow.median() / fast.median()))
    print("large / small                %8.2f for %.1f times the workbooks" % (
        many.median() / fast.median(), counts["large"] / counts["small"]))
    print("report / none, large         %8.2f" % (reported.median() / many.median()))
    for ours, theirs, bare in packed:
        print("%-28s %8.2f" % ("ours / zlib and expat", ours.median() / bare.median()))
        print("%-28s %8.1f" % ("openpyxl / ours, .xlsx", theirs.median() / ours.median()))
    print("outputs of korvex-convert and of the script: " + ("the same cells" if same else "DIFFERENT CELLS"))
    return 0 if same else 1


if __name__ == "__main__":
    raise SystemExit(main())
