#!/usr/bin/env python3
"""The examples of documents, run on simulated units: each must show what it really prints.

usage: maintctl_examples.py [--update] [--program PROGRAM | --path FOLDER...] DOCUMENT...
  --update    writes what was printed into the document, where it is not what stands there
  --program   maintctl_on_board, or another program that answers as maintctl; not given: the one of
              build/release
  --path      folder of programs, as installed, to find before all others; maintsim runs them

An example is a block marked "text" whose first line begins with "$ ". Each such line is run by bash,
with the programs in PATH; lines up to the next one are what it prints, on both outputs. A line that ends
with a backslash goes on in the next one. All examples of a document run one after another in one
folder, which is empty at first; each call of maintctl_on_board has a new board.

Not compared: how long a call took, the time over a watch, the descriptor of a device, which is 3 in
documents, the time and the process in the calls of a unit, and the time that its clock shows. Exit status: 0, or 1 if something differs or a document has no example.
"""
import argparse
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILT = ROOT / "build/release/tests/tools/maintctl_on_board"
VARYING = ((re.compile(r"  \d+ us$", re.M), "  N us"),
           (re.compile(r"^# \d\d:\d\d:\d\d", re.M), "# HH:MM:SS"),
           (re.compile(r"^(\d+) \d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6} \d+ (\S+: )", re.M),
            r"\1 TIME PID \2"),
           (re.compile(r'"time":"[^"]*","process":\d+'), '"time":"TIME","process":0'),
           (re.compile(r"^(clock  +)\d{4}-\d\d-\d\d \w{3} \d\d:\d\d:\d\d$", re.M), r"\1TIME"))
DEVICE_OPENED = re.compile(r'^(open\("/dev/(?:fpga|rtc)".*\) = )10000\d\d', re.M)


def steps_of(block):
    """A block's commands, each with its lines and the lines of its output."""
    steps = []
    open_command = False
    for line in block:
        if line.startswith("$ "):
            steps.append(([line], []))
        elif open_command:
            steps[-1][0].append(line)
        else:
            steps[-1][1].append(line)
            continue
        open_command = line.endswith("\\")
    return steps


def printed_by(command, folder, environment):
    done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, timeout=60,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return DEVICE_OPENED.sub(r"\g<1>3", done.stdout.decode("utf-8", "backslashreplace"))


def comparable(text):
    for pattern, instead in VARYING:
        text = pattern.sub(instead, text)
    return text


def block_run(block, run, where):
    """The block as it should be, and its findings."""
    lines, findings = [], []
    for command_lines, output in steps_of(block):
        command = "\n".join(command_lines)[2:]
        said = run(command)
        old = "".join(line + "\n" for line in output)
        if comparable(said) == comparable(old):
            said = old
        else:
            differences = difflib.unified_diff(old.splitlines(), said.splitlines(), "in the document",
                                               "printed", lineterm="", n=1)
            findings.append(f"{where}: {command}\n" + "\n".join(differences))
        lines += command_lines + said.splitlines()
    return lines, findings, len(steps_of(block))


def document_run(path, run):
    lines, findings, count = [], [], 0
    rest = iter(enumerate(path.read_text(encoding="utf-8").splitlines(), 1))
    for number, line in rest:
        lines.append(line)
        if line != "```text":
            continue
        block = []
        for _, inner in rest:
            if inner == "```":
                break
            block.append(inner)
        if block and block[0].startswith("$ "):
            block, more, steps = block_run(block, run, f"{path}:{number}")
            findings += more
            count += steps
        lines += [*block, "```"]
    return "".join(line + "\n" for line in lines), findings, count


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--program", default=str(BUILT))
    parser.add_argument("--path", action="append", default=[])
    parser.add_argument("documents", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()
    program = os.path.abspath(arguments.program)
    path = [os.path.abspath(folder) for folder in arguments.path]
    for folder in path:
        if not os.path.isdir(folder):
            sys.exit(f"no such folder: {folder}")
    if not path and not os.access(program, os.X_OK):
        sys.exit(f"no such program: {program}")
    failed = False
    for document in arguments.documents:
        with tempfile.TemporaryDirectory() as work:
            folder = pathlib.Path(work, "folder")
            tools = pathlib.Path(work, "bin")
            folder.mkdir()
            tools.mkdir()
            if not path:
                (tools / "maintctl").symlink_to(program)
            environment = {"PATH": ":".join([*path, str(tools), os.environ["PATH"]]), "LC_ALL": "C.UTF-8",
                           "MAINTCTL_LINES": "1", "HOME": work}
            text, findings, count = document_run(
                document, lambda command: printed_by(command, folder, environment))
        print(f"{document}: {count} examples, {len(findings)} of them differ")
        if arguments.update and findings:
            document.write_text(text, encoding="utf-8")
        elif findings or count == 0:
            print("\n".join(findings) or f"{document}: no example")
            failed = True
    sys.exit(1 if failed else 0)


main()
