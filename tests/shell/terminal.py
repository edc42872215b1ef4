# A session at a terminal, as a person sees it: terminal.py PROGRAM SOURCE_DIR BINARY_DIR.
import os, pty, select, shutil, signal, sys, time

signal.alarm(60)  # a shell that does not leave fails the test
program, home = sys.argv[1], sys.argv[3] + "/tests/shell/terminal.home"
shutil.rmtree(home, ignore_errors=True)
os.makedirs(home)
seen, name = b"", "\u00e9\u65e5\U0001F600"  # two, three and four bytes


def start(*kind):  # a session in the C locale, which types UTF-8 all the same
    global pid, fd
    pid, fd = pty.fork()
    if pid == 0:
        os.execve(program, [program, *kind],
                  {**{k: v for k, v in os.environ.items() if k[:3] != "LC_"}, "HOME": home, "LANG": "C"})


def send(keys, *answers):  # types keys, then waits for each answer and the next prompt; what it saw
    global seen
    os.write(fd, keys)
    shown = b""
    for text in answers + ("legiorrug> ",):
        text = text.encode()
        deadline = time.time() + 10
        while text not in seen:
            if not select.select([fd], [], [], max(0, deadline - time.time()))[0]:
                sys.exit("expected %r, the terminal shows %r" % (text, seen))
            seen += os.read(fd, 4096)
        end = seen.index(text) + len(text)
        shown, seen = shown + seen[:end], seen[end:]
    return shown

def leave():
    os.write(fd, b"quit\r")
    return os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])


start("--container-kind", "1")
send(b"", '"help" lists the commands')
send(b"btdEx\t a\r", "1 btdExists: false")  # Tab completes the name
send(b"help createBTD\r", "createBTD NAME CONTENT [URI]", "Create a business transaction definition")
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
send(b"btdExists a\xe9\r", "7: invalid UTF-8 at byte 12")  # not kept in the history either
send(b"nope\r", "(help lists the commands)")
send(b"createBTD %s x\r" % name.encode(), "9 createBTD: done", name)
send(b"btdEx\t %s\r" % name.encode(), "10 btdExists: true")
status = leave()  # failed lines answered at the prompt leave a zero status
history = open(os.path.join(home, ".legiorrug_history"), "rb").read()
if status != 0 or b"btdExists" not in history or b"\n\n" in history or b"\n\\040" in history or \
        b"\xe9\n" in history or name.encode() not in history:
    sys.exit("exit status %d, history %r" % (status, history))
start()  # the history reads back, at the Java registry, whose JVM sets the locale again: three lines up
send(b"")
send(b"\x1b[A" * 3 + b"\r", "1 createBTD: done")
send(b"getBTDNames\r", "2 getBTDNames: ", name)
leave()
