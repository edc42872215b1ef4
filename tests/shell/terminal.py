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

def send(keys, *answers):  # types keys, then waits for each answer and the next prompt
    global seen
    os.write(fd, keys)
    for text in answers + ("legiorrug> ",):
        deadline = time.time() + 10
        while text.encode() not in seen:
            if not select.select([fd], [], [], max(0, deadline - time.time()))[0]:
                sys.exit("expected %r, the terminal shows %r" % (text, seen))
            seen += os.read(fd, 4096)
        seen = seen[seen.index(text.encode()) + len(text):]

send(b"")
send(b"btdEx\t a\r", "1 btdExists: false")  # Tab completes the name
send(b"help createBTD\r", "createBTD NAME CONTENT [URI]")
os.write(fd, b"createBTD half-typed")
send(b"\x03")  # Ctrl-C drops the line, the registry stays
send(b"btdExists half-typed\r", "2 btdExists: false")
os.write(fd, b"quit\r")
status = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
history = open(os.path.join(home, ".legiorrug_history")).read()
if status != 0 or "btdExists" not in history:
    sys.exit("exit status %d, history %r" % (status, history))
