"""The README's example of the Python module runs, from the top of the
source tree, and prints what the README says it prints."""

import os
import re
import subprocess
import sys

from conftest import SOURCE_DIR


def readme_example():
    """The example's code and the output quoted after it."""
    with open(os.path.join(SOURCE_DIR, "README.md"), encoding="utf-8") as readme:
        text = readme.read()
    found = re.search(r"```python\n(.*?)```\n\nprints:\n\n((?:    [^\n]*\n)+)", text, re.S)
    assert found, "README.md has no Python example followed by \"prints:\" and an indented block"
    output = "".join(line[4:] + "\n" for line in found.group(2).splitlines())
    return found.group(1), output


def test_the_readme_example_prints_what_the_readme_quotes():
    code, expected = readme_example()
    done = subprocess.run([sys.executable, "-c", code], cwd=SOURCE_DIR, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    assert done.stdout == expected
