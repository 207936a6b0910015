#!/usr/bin/env python3
"""Usage: manual_test.py PAGE KESH_PLAYER KESH_PATTERN_ASM. The page's USAGE TEXT is `kesh_player -h`, with an
item per long option; lines printed and line forms of OUTPUT/DIAGNOSTICS match both ways, stream included."""
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

NOT_PROVOKED = {"Pattern argument info size is zero for type "}  # needs a library describing an empty value
RUN_PREFIX, DIFF_ROW = re.compile(r"^\[\d+(/\d+)?\] "), re.compile(r"^([0-9a-f]{1,2} {1,2})+$")
ADD10 = ("arg in index=1 size=16\narg out index=2 size=16\narg spare index=3 size=16\n"
         "unary func=addi type=u8 dst=arg:out src=arg:in count=16 imm=10\n")
SETS = "--command sets.txt "
SCENARIOS = [  # arguments, command file text, exit status
    (SETS + "-r -l 2 -t 5 -b -1 -c 0 -a 100000000 -s 100000000", "-t 4 -g 1 -l 2\n-t 0 -b 50 -g 1 --pack\n", 0),
    ("-f add10.bin -i in.bin -o out.bin -b 50", "", 255),  # the golden differs, "spare" is not set
    ("-t 9", "", 1),
    ("-i in.bin", "", 1),
    (SETS, "-t 0 -r\n", 1),
    ("-f missing.bin", "", 1),
    (SETS, "-t 0 -l 64\n", 1),
    (SETS, "-t 4 -g 1 -l 63\n-t 4 -g 1\n", 1),
    ("-t", "", 1),
    ("-t 0 -b 101", "", 1),
]


def unescape(text):
    escapes = {"\\-": "-", "\\&": "", "\\e": "\\", "\\c": "", "\\(lq": '"', "\\(rq": '"'}
    return re.sub(r"\\(-|&|e|c|\(lq|\(rq)", lambda escape: escapes[escape.group(0)], text)


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
    page, player, assembler = sys.argv[1:4]
    source = pathlib.Path(page).read_text(encoding="utf-8")
    split = re.split(r"^\.SH (.*)$", source, flags=re.M)
    parts = {unescape(name.strip().strip('"')): body.splitlines() for name, body in zip(split[1::2], split[2::2])}
    usage = parts["USAGE TEXT"]
    expected = "".join(unescape(line) + "\n" for line in usage[usage.index(".EX") + 1:usage.index(".EE")])
    ran = subprocess.run([player, "-h"], capture_output=True, text=True)
    failures = [] if (ran.returncode, ran.stdout) == (0, expected) else ["usage text: %r" % ran.stdout]
    described = set(re.findall(r'^\.TP\n\.B[IR]? (?:\\-[a-z] ", " )?\\-\\-([a-z_]+)', source, flags=re.M))
    failures += ["no item for --" + option for option in set(re.findall(r"--([a-z_]+)", ran.stdout)) - described]
    all_forms = forms(parts["OUTPUT"], "stdout") + forms(parts["DIAGNOSTICS"], "stderr")
    seen = set(NOT_PROVOKED)
    with tempfile.TemporaryDirectory() as work:
        for name, data in (("add10.kasm", ADD10), ("in.bin", "A" * 16), ("out.bin", "K" * 15 + "L")):
            pathlib.Path(work, name).write_text(data)
        subprocess.run([assembler, "assemble", "add10.kasm", "-o", "add10.bin"], cwd=work, check=True)
        for args, command_file, status in SCENARIOS:
            pathlib.Path(work, "sets.txt").write_text(command_file)
            ran = subprocess.run([player] + args.split(), cwd=work, capture_output=True, text=True, timeout=300)
            if ran.returncode != status:
                failures.append("%s: status %d, not %d\n%s" % (args, ran.returncode, status, ran.stdout + ran.stderr))
            for stream, text in (("stdout", ran.stdout), ("stderr", ran.stderr)):
                for line in (RUN_PREFIX.sub("", line) for line in text.splitlines() if not DIFF_ROW.match(line)):
                    matching = [form for form in all_forms if form[0].match(line)]
                    seen.update(form[1] for form in matching)
                    if stream not in (form[2] for form in matching):
                        failures.append("%s: %s line has no documented form: %r" % (args, stream, line))
    failures += ["documented but never printed: %r" % text for _, text, _ in all_forms if text not in seen]
    for failure in failures:
        print("FAIL:", failure)
    print(len(all_forms), "forms,", len(failures), "failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
