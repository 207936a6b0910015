#!/usr/bin/env python3
"""kesh_player(1) against the tool itself, so the page cannot drift from it: the page's
USAGE TEXT is byte for byte what `kesh_player -h` prints; every line the tool prints in
the scenarios below has a form in OUTPUT (standard output) or DIAGNOSTICS (standard error,
unless the item says standard output), every documented form is printed, and each
scenario ends with the exit status the page gives it. A line form is a .B or .BI line of
those sections whose first argument is quoted: bold parts are literal, italic parts any text.
Usage: manual_test.py PAGE KESH_PLAYER KESH_PATTERN_ASM [--no-fault-injection]
"""
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

# Forms no scenario here can provoke, with the reason.
NOT_PROVOKED = {"Pattern argument info size is zero for type ": "needs a library that describes an empty value"}
RUN_PREFIX, DIFF_ROW = re.compile(r"^\[\d+(/\d+)?\] "), re.compile(r"^([0-9a-f]{1,2} {1,2})+$")
ADD10 = ("arg in index=1 size=16\narg out index=2 size=16\narg spare index=3 size=16\n"
         "unary func=addi type=u8 dst=arg:out src=arg:in count=16 imm=10\n")
SETS = ["--command", "sets.txt"]
# name, arguments, command file text (or None), KESH_EMU_FAIL (or None), status
SCENARIOS = [
    ("built-in cases", "-t 0 -t 1 -t 2 -t 3 -t 4".split(), None, None, 0),
    ("random boost, limits, two runs", "-t 5 -b -1 -c 0 -a 100000000 -s 100000000 -l 2".split(), None, None, 0),
    ("command file, group, pack", SETS + ["-r"], "-t 4 -g 1 -l 2\n-t 0 -b 50 -g 1 --pack\n", None, 0),
    ("golden differs", "-f add10.bin -i in.bin -o out.bin -b 50".split(), None, None, 255),
    ("no such case", ["-t", "9"], None, None, 1),
    ("data before pattern", ["-i", "in.bin"], None, None, 1),
    ("global option in a command file", SETS, "-t 0 -r\n", None, 1),
    ("missing file", ["-f", "missing.bin"], None, None, 1),
    ("group loop count", SETS, "-t 0 -l 64\n", None, 1),
    ("full group", SETS, "-t 4 -g 1 -l 63\n-t 4 -g 1\n", None, 1),
    ("missing value", ["-t"], None, None, 1),
    ("boost the library refuses", ["-t", "0", "-b", "101"], None, None, 1),
    ("library call fails", ["-t", "0"], None, "keshCreatePlayer@1", 1),
]


ESCAPES = {"\\-": "-", "\\&": "", "\\e": "\\", "\\c": "", "\\(lq": '"', "\\(rq": '"'}


def unescape(text):
    return re.sub(r"\\(-|&|e|c|\(lq|\(rq)", lambda escape: ESCAPES[escape.group(0)], text)


def sections(page):
    """Section name -> its source lines."""
    parts = re.split(r"^\.SH (.*)$", page, flags=re.M)
    return {unescape(name.strip().strip('"')): body.splitlines() for name, body in zip(parts[1::2], parts[2::2])}


def forms(lines, default_stream):
    """(pattern, text, stream) of each line form; an item that says "on standard output" puts its forms there."""
    result = []
    for item in re.split(r"^\.(?:TP|PP)$", "\n".join(lines), flags=re.M):
        stream = "stdout" if "on standard output" in item.replace("\n", " ") else default_stream
        for macro, _, rest in (line.partition(" ") for line in item.splitlines()):
            if macro in (".B", ".BI") and rest.startswith('"'):
                args = [unescape(arg) for arg in shlex.split(rest.replace("\\", "\\\\"))]
                pattern = "".join(re.escape(a) if macro == ".B" or i % 2 == 0 else ".*" for i, a in enumerate(args))
                result.append((re.compile("^" + pattern + "$"), " ".join(args) if macro == ".B" else args[0], stream))
    return result


def main():
    page_path, player, assembler = sys.argv[1:4]
    fault_injection = "--no-fault-injection" not in sys.argv
    parts = sections(pathlib.Path(page_path).read_text(encoding="utf-8"))
    failures = []
    usage = parts["USAGE TEXT"]
    expected = "".join(unescape(line) + "\n" for line in usage[usage.index(".EX") + 1:usage.index(".EE")])
    done = subprocess.run([player, "-h"], capture_output=True, text=True)
    if (done.returncode, done.stdout, done.stderr) != (0, expected, ""):
        failures.append("usage text: page\n%s\ntool (status %d)\n%s%s" % (expected, done.returncode, done.stdout,
                                                                          done.stderr))
    all_forms = forms(parts["OUTPUT"], "stdout") + forms(parts["DIAGNOSTICS"], "stderr")
    seen = set()
    env = {key: value for key, value in os.environ.items() if key != "KESH_EMU_FAIL"}
    with tempfile.TemporaryDirectory() as work:
        for name, data in (("add10.kasm", ADD10), ("in.bin", "A" * 16), ("out.bin", "K" * 15 + "L")):
            pathlib.Path(work, name).write_text(data)
        subprocess.run([assembler, "assemble", "add10.kasm", "-o", "add10.bin"], cwd=work, check=True)
        for name, args, command_file, failing, expected_status in SCENARIOS:
            if failing and not fault_injection:
                continue
            if command_file is not None:
                pathlib.Path(work, "sets.txt").write_text(command_file)
            done = subprocess.run([player] + args, cwd=work, env=dict(env, KESH_EMU_FAIL=failing) if failing else env,
                                  capture_output=True, text=True, timeout=300)
            if done.returncode != expected_status:
                failures.append("%s: status %d, not %d\n%s%s" % (name, done.returncode, expected_status,
                                                                  done.stdout, done.stderr))
            for stream, text in (("stdout", done.stdout), ("stderr", done.stderr)):
                after_diff = False
                for line in text.splitlines():
                    line = RUN_PREFIX.sub("", line)
                    if after_diff and DIFF_ROW.match(line):
                        continue
                    matching = [form for form in all_forms if form[0].match(line)]
                    seen.update(form[1] for form in matching)
                    if stream not in (form[2] for form in matching):
                        failures.append("%s: %s line has no documented form: %r" % (name, stream, line))
                    after_diff = line == "Diff:"
    for _, text, _ in all_forms:
        if text not in seen and text not in NOT_PROVOKED and (fault_injection or "Failed" not in text):
            failures.append("documented but never printed: %r" % text)
    for failure in failures:
        print("FAIL:", failure)
    print("%d forms, %d scenarios, %d failures" % (len(all_forms), len(SCENARIOS), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
