# A session at a terminal, as a person sees it: terminal.py PROGRAM SOURCE_DIR BINARY_DIR.
import os, pty, select, shutil, signal, sys, time

signal.alarm(60)  # a shell that does not leave fails the test
program, home = sys.argv[1], sys.argv[3] + "/tests/shell/terminal.home"
shutil.rmtree(home, ignore_errors=True)
os.makedirs(home)
pid, fd = pty.fork()
if pid == 0:
    os.execve(program, [program, "--container-kind", "1"], {**os.environ, "HOME": home})
seen = b""

def send(keys, *answers):  # types keys, then waits for each answer and the next prompt; what it saw
    global seen
    os.write(fd, keys)
    shown = b""
    for text in answers + ("legiorrug> ",):
        deadline = time.time() + 10
        while text.encode() not in seen:
            if not select.select([fd], [], [], max(0, deadline - time.time()))[0]:
                sys.exit("expected %r, the terminal shows %r" % (text, seen))
            seen += os.read(fd, 4096)
        end = seen.index(text.encode()) + len(text)
        shown, seen = shown + seen[:end], seen[end:]
    return shown

send(b"")
send(b"btdEx\t a\r", "1 btdExists: false")  # Tab completes the name
send(b"help createBTD\r", "createBTD NAME CONTENT [URI]")
os.write(fd, b"createBTD half-typed")
for keys in b"\x03", b"\x03":  # Ctrl-C drops the line, or none, and says nothing else
    shown = send(keys)
    if not shown.endswith(b"^C\r\nlegiorrug> ") or b"interrupted" in shown:
        sys.exit("after Ctrl-C at the prompt: %r" % shown)
send(b"btdExists half-typed\r", "2 btdExists: false")
send(b"   \r")  # no history
open(home + "/big", "w").write("x" * 4000000)
send(b"createBTD big @%s/big\r" % home.encode(), "4 createBTD: done")
os.write(fd, b"getBTD big\r")
time.sleep(1)  # the output fills the terminal and waits
send(b"\x03", "legiorrug: interrupted; ", " bytes of output dropped\r\n")
send(b"btdExists big\r", "6 btdExists: true")
os.write(fd, b"quit\r")
status = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
history = open(os.path.join(home, ".legiorrug_history")).read()
if status != 0 or "btdExists" not in history or "\n\n" in history or "\n\\040" in history:
    sys.exit("exit status %d, history %r" % (status, history))
