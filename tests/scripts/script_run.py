"""Runs a script of the repository on a small tree of files."""

import pathlib
import subprocess
import sys
import tempfile

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"


def run_on_tree(script, files):
    """`files` maps relative paths to contents. Returns the exit status and what was written to either stream."""
    with tempfile.TemporaryDirectory() as root:
        for path, content in files.items():
            file = pathlib.Path(root, path)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(content, encoding="utf-8")
        done = subprocess.run([sys.executable, "-B", str(SCRIPTS / script), root], check=False, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return done.returncode, done.stdout
