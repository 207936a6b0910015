#!/usr/bin/env python3
"""kesh_player(1) against the tool itself, so the page cannot drift from it:
  - the page's USAGE TEXT is, byte for byte, what `kesh_player -h` prints;
  - every line the tool prints, on the built-in cases, on a pattern of its own
    whose golden data differ and on known mistakes and failures, has a form
    in OUTPUT (standard output) or DIAGNOSTICS (standard error, unless the
    item says standard output), and every documented form is printed;
  - each scenario ends with the exit status the page gives it.
A line form is a .B or .BI line of those sections whose first argument is
quoted: bold parts are literal, italic parts stand for any text.
Usage: manual_test.py PAGE KESH_PLAYER KESH_PATTERN_ASM [--no-fault-injection]
"""
import os
import re
import shlex
import subprocess
import sys
import tempfile

# Forms no scenario here can provoke, with the reason.
NOT_PROVOKED = {
    "Pattern argument info size is zero for type ": "needs a library that describes an empty value",
}
RUN_PREFIX = re.compile(r"^\[\d+(/\d+)?\] ")
DIFF_ROW = re.compile(r"^([0-9a-f]{1,2} {1,2})+$")

ADD10 = """arg in index=1 size=16
arg out index=2 size=16
arg spare index=3 size=16
unary func=addi type=u8 dst=arg:out src=arg:in count=16 imm=10
"""

# name, arguments, command file text (or None), environment, fault injection?, status
SCENARIOS = [
    ("built-in cases", ["-t", "0", "-t", "1", "-t", "2", "-t", "3", "-t", "4"], None, {}, False, 0),
    ("random boost, limits, two runs",
     ["-t", "5", "-b", "-1", "-c", "0", "-a", "100000000", "-s", "100000000", "-l", "2"], None, {}, False, 0),
    ("command file, group, pack", ["--command", "sets.txt", "-r"],
     "-t 4 -g 1 -l 2\n-t 0 -b 50 -g 1 --pack\n", {}, False, 0),
    ("golden differs", ["-f", "add10.bin", "-i", "in.bin", "-o", "out.bin", "-b", "50"], None, {}, False, 255),
    ("no such case", ["-t", "9"], None, {}, False, 1),
    ("data before pattern", ["-i", "in.bin"], None, {}, False, 1),
    ("global option in a command file", ["--command", "sets.txt"], "-t 0 -r\n", {}, False, 1),
    ("missing file", ["-f", "missing.bin"], None, {}, False, 1),
    ("group loop count", ["--command", "sets.txt"], "-t 0 -l 64\n", {}, False, 1),
    ("full group", ["--command", "sets.txt"], "-t 4 -g 1 -l 63\n-t 4 -g 1\n", {}, False, 1),
    ("missing value", ["-t"], None, {}, False, 1),
    ("boost the library refuses", ["-t", "0", "-b", "101"], None, {}, False, 1),
    ("library call fails", ["-t", "0"], None, {"KESH_EMU_FAIL": "keshCreatePlayer@1"}, True, 1),
]


def unescape(text):
    for escape, plain in (("\\-", "-"), ("\\&", ""), ("\\e", "\\"), ("\\c", ""),
                          ("\\(lq", '"'), ("\\(rq", '"')):
        text = text.replace(escape, plain)
    return text


def sections(page):
    """Section name -> its source lines."""
    result, name = {}, None
    for line in page.splitlines():
        if line.startswith(".SH "):
            name = unescape(line[4:].strip().strip('"'))
            result[name] = []
        elif name is not None:
            result[name].append(line)
    return result


def usage_text(lines):
    start, end = lines.index(".EX"), lines.index(".EE")
    return "".join(unescape(line) + "\n" for line in lines[start + 1:end])


class Form:
    def __init__(self, macro, args, stream):
        parts = []
        for position, arg in enumerate(args):
            literal = macro == ".B" or position % 2 == 0
            parts.append(re.escape(arg) if literal else ".*")
        self.pattern = re.compile("^" + "".join(parts) + "$")
        self.text = " ".join(args) if macro == ".B" else args[0]
        self.stream = stream
        self.seen = False


def forms(lines, default_stream):
    """The line forms of a section; an item that says "on standard output" puts
    its forms there."""
    items, current = [], []
    for line in lines:
        if line in (".TP", ".PP") and current:
            items.append(current)
            current = []
        current.append(line)
    items.append(current)
    result = []
    for item in items:
        stream = "stdout" if "on standard output" in " ".join(item) else default_stream
        for line in item:
            macro, _, rest = line.partition(" ")
            if macro in (".B", ".BI") and rest.startswith('"'):
                args = [unescape(arg) for arg in shlex.split(rest.replace("\\", "\\\\"))]
                result.append(Form(macro, args, stream))
    return result


def run(player, args, env, cwd):
    full_env = dict(os.environ)
    full_env.update(env)
    done = subprocess.run([player] + args, cwd=cwd, env=full_env, capture_output=True,
                          text=True, timeout=300)
    return done.returncode, done.stdout, done.stderr


def main():
    page_path, player, assembler = sys.argv[1:4]
    fault_injection = "--no-fault-injection" not in sys.argv
    with open(page_path, encoding="utf-8") as page:
        parts = sections(page.read())
    failures = []

    status, out, err = run(player, ["-h"], {}, ".")
    expected = usage_text(parts["USAGE TEXT"])
    if (status, out, err) != (0, expected, ""):
        failures.append("usage text: page\n%s\ntool (status %d)\n%s%s" % (expected, status, out, err))

    all_forms = forms(parts["OUTPUT"], "stdout") + forms(parts["DIAGNOSTICS"], "stderr")
    with tempfile.TemporaryDirectory() as work:
        with open(os.path.join(work, "add10.kasm"), "w") as text:
            text.write(ADD10)
        subprocess.run([assembler, "assemble", "add10.kasm", "-o", "add10.bin"], cwd=work, check=True)
        with open(os.path.join(work, "in.bin"), "wb") as data:
            data.write(b"A" * 16)
        with open(os.path.join(work, "out.bin"), "wb") as data:
            data.write(b"K" * 15 + b"L")
        for name, args, command_file, env, needs_faults, expected_status in SCENARIOS:
            if needs_faults and not fault_injection:
                continue
            if command_file is not None:
                with open(os.path.join(work, "sets.txt"), "w") as sets:
                    sets.write(command_file)
            status, out, err = run(player, args, env, work)
            if status != expected_status:
                failures.append("%s: status %d, not %d\n%s%s" % (name, status, expected_status, out, err))
            for stream, text in (("stdout", out), ("stderr", err)):
                after_diff = False
                for line in text.splitlines():
                    line = RUN_PREFIX.sub("", line)
                    if after_diff and DIFF_ROW.match(line):
                        continue
                    matching = [form for form in all_forms if form.pattern.match(line)]
                    for form in matching:
                        form.seen = True
                    if not any(form.stream == stream for form in matching):
                        failures.append("%s: %s line has no documented form: %r" % (name, stream, line))
                    after_diff = line == "Diff:"

    for form in all_forms:
        if not form.seen and form.text not in NOT_PROVOKED and (fault_injection or "Failed" not in form.text):
            failures.append("documented but never printed: %r" % form.text)
    for failure in failures:
        print("FAIL:", failure)
    print("%d forms, %d scenarios, %d failures" % (len(all_forms), len(SCENARIOS), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
