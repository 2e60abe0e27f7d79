#!/usr/bin/env python3
"""maintctl as people and programs meet it: in a terminal of 80 columns and 24 rows, through a pipe,
and as JSON.

usage: maintctl_terminal.py ON_BOARD PROGRAM    the program on the simulated board
                                                (maintctl_on_board), and the program itself, of
                                                which nothing is asked that opens a device
"""
import errno
import fcntl
import json
import os
import pathlib
import pty
import re
import select
import signal
import struct
import subprocess
import sys
import termios

PROGRAM = [os.path.abspath(sys.argv[1])]
ITSELF = sys.argv[2]
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


def terminal(*words, until=None, typed=b"", rows=24, columns=80, **environment):
    """In a terminal: exit status and all that the terminal got. Ctrl-C comes when it has got a text
    so many times: until=(text, times)."""
    child, master = pty.fork()
    if child == 0:
        fcntl.ioctl(1, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        os.environ.update({"TERM": "xterm", **environment})
        os.execv(PROGRAM[0], [*PROGRAM, *words])
    os.write(master, typed)
    got = b""
    while select.select([master], [], [], 60)[0]:
        try:
            piece = os.read(master, 65536)
        except OSError as error:
            if error.errno != errno.EIO:
                raise
            break
        if not piece:
            break
        got += piece
        if until is not None and got.count(until[0]) >= until[1]:
            os.write(master, b"\x03")
            until = None
    if until is not None:
        check(f"{words}: {until[0]} comes {until[1]} times", False, got)
        os.kill(child, signal.SIGKILL)
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
    for last, words in ((b"value=", ["-w", "0.2", "rd_bandwidth"]),
                        (b"}\r\n", ["--watch=0.2", "-j", "rd_phy_status", "port=1"]),
                        (b"panel ", ["-w0.2", "status"]), (b"flags", ["-w", "0.2", "panel"])):
        status, text = terminal(*words, until=(last, 3))
        once, _, _ = run(*[word for word in words[2 if words[0] == "-w" else 1:]])
        check(f"{words}: ends with the last result's status", status == once, text)
        check(f"{words}: showed something", len(text) > 10, text)


def watched_screen(*words, **environment):
    """Four rounds of a watch in a terminal, each as its lines, without their ends."""
    _, text = terminal("-w", "0.1", *words, until=(b"\x1b[J", 4), **environment)
    return [part.split(b"\n") for part in text.split(b"\x1b[H")[1:5]]


def redrawing():
    first, *others = watched_screen("rd_rtc_time", MAINTCTL_CLOCK_RUNS="1")
    check("the first round clears the screen and marks nothing",
          first[0].startswith(b"\x1b[2J# ") and b"\x1b[7m" not in b"".join(first), first)
    for lines in others:
        check("a title, the fields, and nothing below", len(lines) == 9 and lines[8].startswith(b"\x1b[J"), lines)
        check("a title with the time", lines[0].endswith(b" rd_rtc_time"), lines)
        check("all of each line is replaced", all(line.endswith(b"\x1b[K") for line in lines[1:8]), lines)
        marked = [line for line in lines if b"\x1b[7m" in line]
        check("what changed is marked, and only that", len(marked) == 1
              and marked[0].startswith(b"second=") and marked[0].endswith(b"\x1b[0m\x1b[K"), lines)
    first, *others = watched_screen("panel", MAINTCTL_CLOCK_RUNS="1")
    check("a panel that does not change has no marks",
          not any(b"\x1b[7m" in line for lines in others for line in lines), others)
    for environment in ({}, {"NO_COLOR": "1"}):
        first, *others = watched_screen("status", MAINTCTL_CLOCK_RUNS="1", **environment)
        for lines in others:
            marked = [line for line in lines if b"\x1b[7m" in line]
            check("the clock is marked", len(marked) == 1 and marked[0].startswith(b"clock "), lines)
            check("a status that is redrawn fits its terminal", len(lines) == 24, lines)
            lines_fit("a status that is redrawn", b"\n".join(lines))
    # A row with colours, as wide as the terminal, that was another one: the mark takes no room.
    first, *others = watched_screen("status", MAINTCTL_CLOCK_RUNS="1", MAINTCTL_FAIL_AFTER="6")
    changed = [line for line in others[1] if b"\x1b[7m" in line and b"\x1b[31m" in line]
    check("rows that fail are marked", len(changed) > 10, others[1])
    check("one of them is as wide as the terminal",
          max(len(plain(line)) for line in changed) == 80, changed)
    # What is said belongs to the screen.
    _, *others = watched_screen("-n", "rd_counter")
    for lines in others:
        check("what is held back is a line of the screen",
              lines[1].startswith(b"not sent: ioctl(") and lines[1].endswith(b")\x1b[K"), lines)
    _, *others = watched_screen("rd_rtc_time", MAINTCTL_MISSING="rtc")
    check("a failure is a line of the screen",
          others[0][1] == b"maintctl: RD_RTC_TIME: -1: the device cannot be opened\x1b[K", others)
    _, text = terminal("-t", "-w", "0.1", "rd_rtc_status", until=(b"\nclose", 3))
    check("a trace is not drawn over", b"\x1b" not in text and text.count(b"\nopen(") > 2, text)
    _, text = terminal("-w", "0.1", "rd_rtc_status", until=(b"value=", 3), TERM="dumb")
    check("a dumb terminal is not drawn over", b"\x1b" not in text and text.count(b"\n  value=") > 2, text)


def completion():
    """The bash function, called as bash does."""
    source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../tools/maintctl/maintctl.bash")
    script = """. "$1"; cd "$3"; compopt() { printf 'compopt %s\n' "$*"; }
                COMP_WORDBREAKS=$' \t\n"\\'@><=;|&(:' COMP_LINE=$2 COMP_POINT=${4:-${#2}}
                _maintctl; printf '%s\n' "${COMPREPLY[@]}" """

    def offered(line, *point):
        done = subprocess.run(["bash", "-uc", script, "bash", source, f"{PROGRAM[0]} {line}",
                               os.path.dirname(source), *point], capture_output=True, timeout=60)
        check(f"completion of '{line}' says nothing else", done.stderr == b"", done.stderr)
        return done.stdout.decode().split("\n")[:-1]

    after_name = str(len(PROGRAM[0]) + 1 + len("rd_phy_reg"))
    for line, expected, *point in (
            ("sna", ["snapshot"]), ("rd_phy_st", ["rd_phy_status"]),
            ("RD_PHY_REGISTER ", ["port=", "number="]),
            ("RD_PHY_REGISTER p", ["compopt -o nospace", "port="]),
            ("-w 2 RD_PHY_REGISTER port=1 ", ["compopt -o nospace", "number="]),
            ("WR_LED_A ledA=", ["off", "on", "calm", "alert"]), ("WR_LED_A ledA=c", ["calm"]),
            ("-x rd_bandwidth ", ["compopt -o nospace", "record="]),
            ("-x rd_bandwidth record=@maintctl.b", ["@maintctl.bash"]),
            ("rd_phy_reg port=1", ["rd_phy_register"], after_name), ("nonsense ", [""])):
        check(f"completion of '{line}'", offered(line, *point) == expected, offered(line, *point))


def typed_script():
    status, text = terminal("run", typed=b"rd_bandwidth\n\x04")
    check("who types a script is told how it ends", b"\nmaintctl: type" in b"\n" + text
          and b"Ctrl-D" in text and text.endswith(b"# rd_bandwidth\nvalue=20\n") and status == 0, text)
    done = subprocess.run([*PROGRAM, "run", "-"], input=b"rd_bandwidth", capture_output=True, timeout=60)
    check("a script from a pipe is run without a word",
          done.stdout == b"# rd_bandwidth\nvalue=20\n" and done.stderr == b"", done)


def closed_descriptors():
    """The program itself, with descriptors that the shell has closed."""
    def closing(redirection, *words):
        done = subprocess.run(["/bin/sh", "-c", f'"$@" {redirection}', "sh", ITSELF, *words],
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
        return done.returncode, done.stdout, done.stderr
    check("no standard input", closing("<&-", "run") == (
        64, b"", b"maintctl: standard input cannot be read: It is closed\n"), closing("<&-", "run"))
    check("no standard output", closing(">&-", "list") == (
        74, b"", b"maintctl: the output cannot be written: It is closed\n"), closing(">&-", "list"))
    check("no standard error", closing("2>&-", "nonsense") == (64, b"", b""))
    check("none of the three", closing("<&- >&- 2>&-", "-V") == (74, b"", b""))
    reader, writer = os.pipe()
    os.close(reader)
    done = subprocess.run([ITSELF, "list"], stdout=writer, stderr=subprocess.PIPE, timeout=60,
                          preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_DFL))
    os.close(writer)
    check("a pipe without a reader: 74 without a word", (done.returncode, done.stderr) == (74, b""), done)


def broken_output():
    for words in (["list"], ["--help"], ["rd_bandwidth"], ["status"], ["snapshot"], ["-j", "list"],
                  ["-w", "0.1", "rd_bandwidth"]):
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


for part in (screens, documents, snapshots, watching, redrawing, completion, typed_script,
             closed_descriptors, broken_output):
    part()
print(f"{CHECKS} checks, {len(FINDINGS)} failed")
sys.exit(1 if FINDINGS or CHECKS < 1000 else 0)
