# The README's JSON Lines examples are what the shell prints for them:
# readme.py PROGRAM README WORKDIR.
import re, subprocess, sys

program, readme, workdir = sys.argv[1:]
examples = re.findall(r"^\$ legiorrug ([^\n]*) <<'EOF'\n(.*?)^EOF\n(.*?)^```", open(readme).read(), re.M | re.S)
if len(examples) != 2:
    sys.exit("expected 2 examples in %s, found %d" % (readme, len(examples)))
for args, script, shown in examples:
    printed = subprocess.run([program] + args.split(), input=script, stdout=subprocess.PIPE, text=True,
                             cwd=workdir).stdout
    if printed != shown:
        sys.exit("legiorrug %s prints\n%s\nwhere the README shows\n%s" % (args, printed, shown))
