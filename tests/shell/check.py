# End-to-end tests of the shell: check.py PROGRAM SOURCE_DIR BINARY_DIR. Each row runs the program once in
# BINARY_DIR and checks its exit status, exact standard output (bytes, or a file of cases/), that standard error
# matches err and not forbid, or is the message says; a --check-registry row names the requirements that fail
# (each name's start and what its evidence shows), and its --junit file must validate against junit.xsd.
import concurrent.futures, difflib, json, os, re, shutil, subprocess, sys, zipfile, xml.etree.ElementTree as xml

program, source, binary = sys.argv[1:]
cases = source + "/tests/shell/cases/"
stub, java = "--container-kind 1 ", "--jvm-option=-Xcheck:jni "
ok = b"createBTD a b\nbtdExists a\n"  # a script with no failing line
no_jvm = {"JAVA_HOME": "/nonexistent", "LEGIORRUG_LIBJVM": "/nonexistent/libjvm.so", "LD_PRELOAD": ""}
pool, runs = concurrent.futures.ThreadPoolExecutor(4), []
# A copy of the program with no bundled jars beside it, written before any row starts a child that could
# inherit the file open for writing ("Text file busy").
os.makedirs(binary + "/tests/shell/bare", exist_ok=True)
bare_program = shutil.copy(program, binary + "/tests/shell/bare")


def run(name, args, status, stdin=os.devnull, out=None, err="", forbid=None, says=None, into=None, env={}, bare=False,
        failing=None):
    err = err if says is None else "^" + re.escape("legiorrug: %s\n" % says) + r"\Z"  # all of standard error
    command = bare_program if bare else program
    given = stdin if isinstance(stdin, bytes) else None
    stdin = None if given is not None else os.open(stdin, os.O_RDONLY)  # a directory too
    stdout = os.open("/dev/full", os.O_WRONLY) if into == "full" else subprocess.PIPE
    if into == "closed pipe":
        reader, stdout = os.pipe()
        os.close(reader)
    done = subprocess.run([command] + args.split(), stdin=stdin, input=given, stdout=stdout, stderr=subprocess.PIPE,
                          env={**os.environ, **env}, cwd=binary)
    for descriptor in (stdin, stdout):
        if descriptor is not None and descriptor >= 0:
            os.close(descriptor)
    error, failed = done.stderr.decode(errors="replace"), []
    if status is not None and done.returncode != status:
        failed.append("exit status %d, expected %d" % (done.returncode, status))
    expected = open(cases + out, "rb").read() if isinstance(out, str) else out
    if expected is not None and done.stdout != expected:
        diff = difflib.unified_diff(expected.decode().splitlines(), done.stdout.decode().splitlines(), lineterm="")
        failed.append("standard output differs:\n" + "\n".join(diff))
    junit = status != 2 and re.search(r"--junit (\S+)", args)
    if failing is not None:
        rows = [json.loads(line) for line in done.stdout.decode().splitlines()]
        verdicts = {r["requirement"]: r["verdict"] if r["verdict"] in ("fail", "skipped") or not r["evidence"] else "noted"
                    for r in rows if "requirement" in r}
        shown_junit = {c.get("name"): "fail" if c.find("failure") is not None else "skipped" if c.find("skipped") is not
                       None else "noted" if c.find("system-out") is not None else "pass"
                       for c in xml.parse(binary + "/" + junit[1]).iter("testcase")}
        if shown_junit != verdicts:
            failed.append("the JUnit report differs from the JSON one")
        found = {r["requirement"]: " ".join(e["got"] for e in r["evidence"]) for r in rows if r.get("verdict") == "fail"}
        if len(found) != len(failing) or not all(any(n.startswith(k) and re.search(v, g) for n, g in found.items())
                                                 for k, v in failing.items()):
            failed.append("failing requirements: %s" % json.dumps(found, indent=1))
    if junit and subprocess.run(["xmllint", "--noout", "--schema", source + "/tests/shell/junit.xsd", junit[1]],
                                cwd=binary, capture_output=True).returncode != 0:
        failed.append("the JUnit report does not validate")
    if not re.search(err, error) or (forbid and re.search(forbid, error)):
        failed.append("standard error does not match %r or matches %r" % (err, forbid))
    return "%s: legiorrug %s\n%s\nstandard error:\n%s" % (name, args, "\n".join(failed), error) if failed else ""


row = lambda *args, **checks: runs.append(pool.submit(run, *args, **checks))


# Scripts with their expected output.
row("stub_session", stub + "--json " + cases + "stub.lgr", 0, out="stub.jsonl")
row("usage_errors", stub + "--json -f " + cases + "usage.lgr", 2, out="usage.jsonl")
row("java_session", java + "--json -f " + cases + "java.lgr", 2, out="java.jsonl", forbid="WARNING|Exception")
row("text_output", stub, 2, stdin=cases + "text.lgr", out="text.out", 
    err=r'^legiorrug: line 4: unknown command "nope" .*\n\Z')
row("java_text_service", java, 0, stdin=b"createService s ns d\ngetService s\n",
    out=b'1 createService: done\n2 getService: true\n  service = "s" in namespace "ns", document "d"\n')
row("byte_order_mark", stub, 0, stdin=b"\xef\xbb\xbfbtdExists a\n")
# The examples of the README and the manual page print what they show.
shown = "".join(open(source + path).read() for path in ("/README.md", "/docs/legiorrug.1.md"))
examples = re.findall(r"^\$ legiorrug ([^\n]*) <<'EOF'\n(.*?)^EOF\n(.*?)^```", shown, re.M | re.S)
for args, script, shown in examples if len(examples) == 3 else sys.exit("expected 3 examples"):
    row("example", args, None, stdin=script.encode(), out=shown.encode())
# The manual page names every option of --help, and every command with its arguments and what it does as --help
# gives them.
listed = subprocess.run([program, "--help"], stdout=subprocess.PIPE, text=True).stdout.split("\nCommands,")
page = re.sub(r"\\f(\[\w*\]|\w)", "", open(binary + "/docs/legiorrug.1").read()).replace("\\-", "-")
page = " ".join(page.replace("\\[aq]", "'").split())
words = re.findall(r"(?:^  |,)(-[-\w]+)", listed[0], re.M) + re.findall(r"^(?: {2}| {6})(\w.*)$", listed[1], re.M)
missing = [word for word in words if not re.search(r"(?<![-\w])%s(?![-\w])" % re.escape(word), page)]
runs.append(pool.submit(lambda: missing and "man_page: legiorrug.1 lacks %s" % ", ".join(missing)))

# Exit statuses and start failures; no libjvm to be found, which the in-memory registry needs not.
row("all_succeed", stub + "--json -f -", 0, stdin=ok)
for option in "--help", "--version":
    row(option, option, 0, err=r"^\Z")
row("bad_option", "--colour", 2, err="^legiorrug: .*--colour")
row("bad_trace_level", stub + "--trace 6", 2,
    says="--trace: Value 6 not in range 0 to 5 (legiorrug --help lists the options)")
row("missing_script", stub + "-f " + cases + "none.lgr", 2, err="none.lgr")
row("empty_option_value", "--name= -f x", 2, says="--name needs a value")
row("one_value_per_option", "--classpath a b", 2, err="cannot read b")
row("trace_file_unwritable", stub + "--trace 3 --trace-file /nonexistent/trace", 2,
    says="cannot open the trace file /nonexistent/trace: No such file or directory")
row("java_without_registry_classes", "--json", 2, stdin=ok, out=b"", bare=True,
    err="cannot start the registry: DRX3702: Fatal Error Making JNI Call: ISRAdapter_getInstance; Java class or "
    r"method not resolved \(class path: empty; Unable to locate Java class "
    r"com/vantor/broker/isr/ISRAdapter \(java.lang.ClassNotFoundException: com.vantor.broker.isr.ISRAdapter\)\)$")
row("unresolved_method", java + "--classpath tests/java/legiorrug-migration-without-migrateisr.jar", 0,
    says="Unable to locate Java method or field migrateISR com/vantor/broker/isr/migration/ISRMigration "
    "(java.lang.NoSuchMethodError: migrateISR); the calls that need it fail")
os.makedirs(binary + "/tests/shell/corrupt/com/vantor/broker/isr", exist_ok=True)
open(binary + "/tests/shell/corrupt/com/vantor/broker/isr/ISRAdapter.class", "w").write("not a class")
row("classpath_missing", java + "--classpath /nonexistent/x.jar", 2, stdin=ok, out=b"",
    says="--classpath /nonexistent/x.jar: no such file or folder")
zipfile.ZipFile(binary + "/tests/shell/empty.jar", "w").close()
row("classpath_empty_jar", java + "--classpath tests/shell/empty.jar", 0, stdin=ok)
row("classpath_not_a_jar", java + "--classpath tests/shell/corrupt/com/vantor/broker/isr/ISRAdapter.class", 2,
    says="--classpath tests/shell/corrupt/com/vantor/broker/isr/ISRAdapter.class: neither a jar nor a folder of classes")
row("corrupt_class", "--classpath tests/shell/corrupt", 2, stdin=ok,
    err=r"Unable to locate Java class com/vantor/broker/isr/ISRAdapter \(java.lang.ClassFormatError: Incompatible")
row("stub_without_jvm_or_trace", stub, 0, stdin=ok, env=no_jvm, err=r"^\Z")
row("java_without_jvm", "--json", 2, stdin=ok, out=b"", env=no_jvm,
    err="cannot start the Java virtual machine .*tried: /nonexistent/lib/server/libjvm.so.*; /nonexistent/libjvm.so")
row("bad_jvm_option", "--jvm-option=-Xno-such-option", 2, err="cannot start the Java virtual machine")
row("jvm_refuses_option", "--json --jvm-option=-Xmx1k", 2, out=b"",
    err=r"^legiorrug: cannot start the Java virtual machine \(JVM options: -Xmx1k\): .*heap\n\Z")
row("trace_to_stderr", stub + "--trace 3", 0, stdin=ok, err='entry KorISRAdapterStub::createBTD .* "a" "b" ""\n')
row("trace_escapes", stub + "--trace 3", 0, stdin=b'btdExists "\\u0085\\u202e\\u2028\\u007f"\n',
    err=r'entry KorISRAdapterStub::btdExists .* "\\u0085\\u202e\\u2028\\x7F"\n')
row("trace_to_file", stub + "--trace 3 --trace-file /dev/stderr", 0, stdin=ok, err="entry KorISRAdapterStub::btdExists")
for option in "--trace-file /dev/stderr", "--show-java-errors":  # where Java's description of an exception goes
    row("java_errors", java + option + " -f " + cases + "java.lgr", 2,
        err='Exception in thread "main" com.*LxRecoverableException')

# The registry check: the reference registry passes; each broken registry fails exactly its requirement.
check = "--check-registry --json --junit tests/shell/%s.xml "
faulty = "--reference-registry --classpath tests/java/legiorrug-faulty-registry.jar --jvm-option=-Dlegiorrug.fault="
for case, args, failing in [
        ("reference", "--reference-registry", {}), ("example", "--classpath tests/java/legiorrug-example-registry.jar", {}),
        ("wrong_descriptor", "--reference-registry --classpath tests/java/legiorrug-wrong-descriptor.jar",
         {"ISRMigration.migrateISR ()Z": r"^it declares migrateISR \(\)V$"}),
        ("null_uri", faulty + "null-uri", {"createBTD, updateBTD and getBTD answer": "DRX3703.*BTDDocument_getUri"}),
        ("plain_exception", faulty + "plain-exception",
         {"getBTD and updateBTD of a missing": "(DRX3701.*RuntimeException.*broker sees DRX3701.*){3}"}),
        ("unsynchronised", faulty + "unsynchronised", {"8 threads": "ConcurrentModificationException|listed"}),
        ("null_element", faulty + "null-element", {"getBTDs answers an array": "DRX3703.*BTDDocument_getUri"}),
        ("cut_at_nul", faulty + "cut-at-nul", {"a BTD reads back as stored, changed and gone: U+0000": '^the document "<doc>"$'}),
        ("new_instance", faulty + "new-instance", {"ISRAdapter.getInstance answers the same": "a new object on the second call a new object on another thread"}),
        ("late_write", faulty + "late-write", {"a BTD created, updated or deleted on one thread": "^false( false){3}$"}),
        ("null_trace_text", faulty + "null-trace-text", {"a known exception carries":
         '^no trace text: the broker prints "5101: " the insert "java.lang.Object@[0-9a-f]+": the broker'}),
        ("alone", "", {"class com/vantor/broker/isr/ISRAdapter loads": "ClassNotFoundException"}),
        ("replace_on_create", faulty + "replace", {}), ("silent_delete", faulty + "silent-delete", {})]:
    row("check_registry_" + case, check % case + args, 1 if failing else 0, err=".*", failing=failing)
row("check_registry_text", "--check-registry --reference-registry", 0, err=r"^\Z")
row("junit_unwritable", "--check-registry --junit /nonexistent/check.xml", 2,
    err="cannot write the JUnit report to /nonexistent/check.xml: No such file or directory")
row("junit_needs_check", "--junit tests/shell/none.xml", 2, err="--junit requires --check-registry")
row("check_registry_not_in_memory", stub + "--check-registry", 2, says="--check-registry checks the Java registry "
    "and runs no script; leave out --container-kind 1")

# The JVM's own printing, start-up included, whole where it goes.
row("jvm_log_in_trace", java + "--jvm-option=-Xlog:gc --trace-file /dev/stderr", 0, stdin=ok,
    err=r"^\[[0-9.]+s\]\[info\]\[gc\] Using ", forbid="Could not write log")
row("jvm_start_shown", java + "--jvm-option=-XX:+PrintCommandLineFlags --show-java-errors", 0, stdin=ok,
    err=r"-XX:\+PrintCommandLineFlags")
# What Java receives: the recording registry echoes each call.
row("flag_reaches_java", "--classpath tests/java/legiorrug-recording-registry.jar --show-java-errors "
    "--jvm-option=-Dlegiorrug.recording.echo=true --jvm-option=-Dlegiorrug.empty=", 0,
    stdin=b"setRepositoryDetails a b c true e f 1\nsetRepositoryDetails a b c false e f 2\n",
    err=r"\(a,b,c,true,e,f,1\)\nISRAdapter.setRepositoryDetails\(a,b,c,false,e,f,2\)\n")

# Ending early: quit or exit, --bail, a Java heap that has run out.
for word in b"quit", b"exit":
    row("ends_script", stub, 0, stdin=b"btdExists a\n" + word + b"\nnope\n", out=b"1 btdExists: false\n")
row("carriage_return_and_last_line_continued", stub, 0, stdin=b"btdExists\ra\nbtdExists \\\nb \\",
    out=b"1 btdExists: false\n2 btdExists: false\n")
row("bail", stub + "--bail", 2, stdin=b"btdExists a\nnope\nbtdExists a\n", out=b"1 btdExists: false\n",
    says='line 2: unknown command "nope" (legiorrug --help lists the commands)')
os.makedirs(binary + "/tests/shell/values", exist_ok=True)
open(binary + "/tests/shell/values/1MiB", "w").write("x" * 1048576)
# 103 lines: the one that stops the run and the lines not run add up to them.
heap = b"".join(b"createBTD n%d @tests/shell/values/1MiB\n" % i for i in range(100)) + b"btdExists \\\na\nbtdExists b"
stops = "|".join("line %d: the Java heap is exhausted; the run stops here, %d lines? not run" % (n, 103 - n)
                 for n in range(1, 103))
row("heap_exhausted", "--jvm-option=-Xmx16m", 2, stdin=heap, err=r"^legiorrug: (%s)\. A larger heap may help: "
    r"--jvm-option=-Xmx<size>, for example --jvm-option=-Xmx4g\n\Z" % stops)

# Values from files, byte for byte; one record is one line to any reader.
value = "<d a=\"1\">\\\n\u2028\u2029\u0085\u202e\u200f\u0800\u007f\U0001F600</d>"
open(binary + "/tests/shell/values/small", "w").write(value)
shown = b'<d a=\\"1\\">\\\\\\n\\u2028\\u2029\\u0085\\u202e\\u200f\xe0\xa0\x80\\u007f\xf0\x9f\x98\x80</d>'
uri = b'"uri":"/apiv1/business/businesstransactions/'
row("value_from_file", stub + "--json", 2, stdin=b"createBTD a @tests/shell/values/small\ngetBTD a\n"
    b"createBTD '@x' @'tests/shell/values'\ncreateBTD b @nothing\ncreateBTD b @\n",
    out=b'{"line":1,"op":"createBTD","ok":true,"out":{' + uri + b'a"}}\n{"line":2,"op":"getBTD","ok":true,"out":'
    b'{"content":"' + shown + b'",' + uri + b'a"}}\n{"line":3,"op":"createBTD","ok":false,"error":{"type":"usage",'
    b'"text":"cannot read @tests/shell/values: Is a directory"}}\n{"line":4,"op":"createBTD","ok":false,"error":'
    b'{"type":"usage","text":"cannot read @nothing: No such file or directory"}}\n{"line":5,"op":"createBTD",'
    b'"ok":false,"error":{"type":"usage","text":"@ needs a file name"}}\n')
open(binary + "/tests/shell/values/10MB", "w").write(value * 250000)
for registry in stub, java:
    row("large_value_from_file", registry + "--json", 0, stdin=b"createBTD big @tests/shell/values/10MB\ngetBTD big\n",
        out=b'{"line":1,"op":"createBTD","ok":true,"out":{' + uri + b'big"}}\n{"line":2,"op":"getBTD","ok":true,'
        b'"out":{"content":"' + shown * 250000 + b'",' + uri + b'big"}}\n')


def round_trip(first, second, types, lacks, refunds):  # a dump run on an empty registry of the second kind, dumped again
    script, dumps, errors = open(source + "/examples/registry.lgr", "rb").read() + b"createBTD big @tests/shell/values/10MB\n"\
        b'createBTD "\\ud800 \'\\"\\n\\\\" @tests/shell/values/small\n', [], []
    for registry in first, second:
        done = subprocess.run([program] + (registry + "--json").split(), input=script + b"dump %s\n" % types,
                              capture_output=True, cwd=binary)
        dumps.append(json.loads(done.stdout.splitlines()[-1])["result"])
        script = dumps[-1].encode()
        errors.append("exit status %d\n%s" % (done.returncode, done.stderr.decode()))
    said = re.findall(r"^legiorrug: the dump holds no (\w+)", errors[0], re.M)
    kept = [[line for line in dump.splitlines() if first == second or not line.startswith(("#", "createService"))]
            for dump in dumps]  # the in-memory registry keeps no services
    return "" if errors[0].startswith("exit status 1\n") and "WARNING" not in errors[0] and \
        errors[1].startswith("exit status 0\n") and kept[0] == kept[1] and said == lacks and \
        dumps[0].count("# It holds no ") == len(lacks) and dumps[0].count('"Refund"') == refunds else \
        "round trip %s to %s of dump %s: said %s, first difference %s\n%s" % (
            first, second, types, said, next(((a[:200], b[:200]) for a, b in zip(*kept) if a != b), None), errors)


# Each kind to each, from the sample script (its last line fails): the reserved type's policies are the Java
# registry's BTDs, and what a dump lacks is said.
for case in [(stub, stub, b"Security BusinessTransactionDefinition", ["services"], 1),
             (java, java, b"Security BusinessTransactionDefinition Security", [], 1),
             (stub, java, b"Security", ["services"], 0), (java, stub, b"", ["policies"], 1)]:
    runs.append(pool.submit(round_trip, *case))
row("dump_text", java, 0, stdin=b"# a comment ends in \\\ncreateBTD a 'x\\'\\\n'y'\ncreateService s n d\n"
    b"createPolicy T p d\ndump T\n", out=b'2 createBTD: done\n  uri = "/apiv1/business/businesstransactions/a"\n'
    b'4 createService: done\n5 createPolicy: done\n  uri = "/apiv1/policy/T/p"\n6 dump: 4 lines of script\n# A registry '
    b'dumped by legiorrug; run it on an empty registry to rebuild it.\ncreateBTD "a" "x\\\\y" '
    b'"/apiv1/business/businesstransactions/a"\ncreateService "s" "n" "d"\ncreatePolicy "T" "p" "d" "/apiv1/policy/T/p"\n')

# Nothing lost behind a zero exit status.
row("over_long_line", stub, 2, stdin=b"createBTD a b\n" + b"x" * 1048577 + b"\nbtdExists a\n",
    out=b'1 createBTD: done\n  uri = "/apiv1/business/businesstransactions/a"\n3 btdExists: true\n',
    says="line 2: the line is longer than 1048576 bytes; a longer value can come from a file, written @FILE")
row("input_is_a_directory", stub, 2, stdin=cases, says="cannot read standard input: Is a directory")
row("output_full", stub + "--json", 2, stdin=ok, into="full",
    says="cannot write standard output: No space left on device")
row("trace_full", stub + "--trace 3 --trace-file /dev/full", 2, stdin=ok,
    err=r"cannot write the trace to /dev/full: No space left on device\n\Z")
for registry in stub, java:  # line 4 of the script, a usage error, would show on standard error if it ran
    row("closed_pipe", registry, 2, stdin=cases + "text.lgr", into="closed pipe",
        says="cannot write standard output: Broken pipe")

sys.exit("\n\n".join(filter(None, (run.result() for run in runs))) or None)
