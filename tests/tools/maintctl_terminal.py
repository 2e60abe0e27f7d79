#!/usr/bin/env python3
"""maintctl as people and programs meet it: in a terminal of 80 columns and 24 rows, through a pipe,
and as JSON.

usage: maintctl_terminal.py PROGRAM...    the program on the simulated board (maintctl_on_board)
"""
import errno
import fcntl
import json
import os
import pathlib
import pty
import re
import signal
import struct
import subprocess
import sys
import termios
import time

PROGRAM = sys.argv[1:]
FINDINGS = []
CHECKS = 0
# Of the tests' own table.
COMMANDS = set(re.findall(r"\{NAMED\((\w+)\)", (
    pathlib.Path(__file__).parents[1] / "device/command_facts.cpp").read_text(encoding="utf-8")))


def check(what, holds, said=""):
    global CHECKS
    CHECKS += 1
    if not holds:
        FINDINGS.append(what)
        print(f"FAILED: {what}\n{said}")


def run(*words, **environment):
    """Through pipes: status, standard output, standard error, all as bytes."""
    done = subprocess.run([*PROGRAM, *words], env={**os.environ, **environment},
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
    return done.returncode, done.stdout, done.stderr


def terminal(*words, interrupt_after=None, rows=24, columns=80, **environment):
    """In a terminal: exit status and all that the terminal got."""
    child, master = pty.fork()
    if child == 0:
        fcntl.ioctl(1, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        os.environ.update({"TERM": "xterm", **environment})
        os.execv(PROGRAM[0], [*PROGRAM, *words])
    if interrupt_after is not None:
        time.sleep(interrupt_after)
        os.write(master, b"\x03")
    got = b""
    while True:
        try:
            piece = os.read(master, 65536)
        except OSError as error:
            if error.errno != errno.EIO:
                raise
            break
        if not piece:
            break
        got += piece
    _, status = os.waitpid(child, 0)
    os.close(master)
    return os.waitstatus_to_exitcode(status), got.replace(b"\r\n", b"\n")


def plain(text):
    """A terminal's text without its colours."""
    kept, at = b"", 0
    while at < len(text):
        if text[at:at + 2] == b"\x1b[":
            at += 2
            while not 0x40 <= text[at] <= 0x7E:
                at += 1
            at += 1
        else:
            kept += text[at:at + 1]
            at += 1
    return kept


def lines_fit(what, text, rows=None):
    lines = plain(text).decode().split("\n")
    long = [line for line in lines if len(line) > 80]
    check(f"{what}: no line is longer than 80 columns", not long, "\n".join(long))
    if rows is not None:
        check(f"{what}: at most {rows} rows", len(lines) - 1 <= rows, plain(text).decode())


def json_lines(what, text):
    try:
        return [json.loads(line) for line in text.decode("utf-8").splitlines()]
    except ValueError as error:
        check(f"{what}: every line is JSON ({error})", False, text.decode(errors="replace"))
        return []


def screens():
    boards = {"all there": {}, "no device": {"MAINTCTL_MISSING": "fpga"},
              "no clock": {"MAINTCTL_MISSING": "rtc"}, "nothing": {
                  "MAINTCTL_MISSING": "fpga rtc", "MAINTCTL_NO_FILES": "1"},
              "registers fail": {"MAINTCTL_REFUSED": "6B42"},
              "PHYs fail": {"MAINTCTL_REFUSED": "6B87 6B98"},
              "panel fails": {"MAINTCTL_REFUSED": "6B11"}}
    for state in ("1", "2", "3"):
        for name, board in boards.items():
            environment = {"MAINTCTL_STATE": state, **board}
            for verb in ("status", "panel"):
                what = f"{verb}, state {state}, {name}"
                status, text = terminal(verb, **environment)
                lines_fit(what, text, 24)
                check(f"{what}: colours in a terminal", b"\x1b[" in text or name != "all there", text)
                bare_status, bare = terminal(verb, NO_COLOR="1", **environment)
                check(f"{what}: NO_COLOR", b"\x1b" not in bare, bare)
                _, dumb = terminal(verb, TERM="dumb", **environment)
                check(f"{what}: no colours for a dumb terminal", b"\x1b" not in dumb, dumb)
                pipe_status, piped, _ = run(verb, **environment)
                check(f"{what}: no colours in a pipe", b"\x1b" not in piped, piped)
                check(f"{what}: the same words everywhere",
                      plain(text) == bare == dumb and piped in bare, text + piped)
                check(f"{what}: the same status everywhere", status == bare_status == pipe_status)
                json_status, said, _ = run(verb, "--json", **environment)
                told = json_lines(what, said)
                check(f"{what}: one JSON object", len(told) == 1, said)
                check(f"{what}: JSON has the same status", json_status == status)
                # Each failure is told, and the first is the status.
                errors = [told[0]] if "error" in told[0] else told[0].get("status", {}).get("errors", [])
                check(f"{what}: a status that tells", errors or status == 0, said)
                check(f"{what}: the status is the first failure's",
                      not errors or status == -errors[0]["result"], said)
                check(f"{what}: it fails where a device is missing",
                      errors or name == "all there" or (verb, name) == ("panel", "no clock")
                      or (verb == "panel" and name in ("registers fail", "PHYs fail")), said)


def documents():
    for words in (["--help"], ["list"], ["describe", "RD_RULE_ENTRY"], ["describe", "wr_led_group_1"]):
        status, text = terminal(*words)
        check(f"{words}: ends well", status == 0)
        lines_fit(" ".join(words), text)
    _, listed, _ = run("list", "--json")
    commands = json_lines("list", listed)
    check("list --json has all commands", {row["command"] for row in commands} == COMMANDS)
    for row in commands:
        for words in (["describe", row["command"]], ["describe", str(row["code"])]):
            status, text, _ = run(*words)
            check(f"{words}: ends well", status == 0)
            lines_fit(" ".join(words), text)
        _, text, _ = run("-j", "describe", row["command"].lower())
        told = json_lines(row["command"], text)
        check(f"{row['command']}: described in one object",
              len(told) == 1 and told[0]["command"] == row["command"]
              and told[0]["code"] == row["code"] and told[0]["results"], text)


def snapshots():
    for environment in ({}, {"MAINTCTL_MISSING": "fpga"}, {"MAINTCTL_REFUSED": "6B29"}):
        _, text, _ = run("snapshot", **environment)
        check(f"snapshot {environment}: many objects", len(json_lines("snapshot", text)) > 100)
        _, again, _ = run("snapshot", **environment)
        check(f"snapshot {environment}: the same once more", text == again)


def watching():
    for words in (["-w", "0.2", "rd_bandwidth"], ["--watch=0.2", "-j", "rd_phy_status", "port=1"],
                  ["-w0.2", "status"], ["-w", "0.2", "panel"]):
        status, text = terminal(*words, interrupt_after=1)
        once, _, _ = run(*[word for word in words[2 if words[0] == "-w" else 1:]])
        check(f"{words}: ends with the last result's status", status == once, text)
        check(f"{words}: showed something", len(text) > 10, text)


def broken_output():
    for words in (["list"], ["--help"], ["rd_bandwidth"], ["status"], ["snapshot"], ["-j", "list"]):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([*PROGRAM, *words], stdout=full, stderr=subprocess.PIPE, timeout=60)
        check(f"{words}: 74 when the output is full", done.returncode == 74, done.stderr)
        check(f"{words}: says so in one line", done.stderr.count(b"\n") == 1, done.stderr)
    reader, writer = os.pipe()
    os.close(reader)
    done = subprocess.run([*PROGRAM, "list"], stdout=writer, stderr=subprocess.PIPE, timeout=60,
                          preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_DFL))
    os.close(writer)
    check("a pipe without a reader: 74, or the signal", done.returncode in (74, -signal.SIGPIPE))


for part in (screens, documents, snapshots, watching, broken_output):
    part()
print(f"{CHECKS} checks, {len(FINDINGS)} failed")
sys.exit(1 if FINDINGS or CHECKS < 1000 else 0)
