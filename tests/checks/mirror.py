"""Holds the tests against the sources they mirror:  mirror.py ROOT

nelvo/core/guid.cpp has tests/core/guid_test.cpp, and tool/agent_id.cpp may have tests/tool/agent_id_test.cpp.
What needs a program of its own may stand beside it, guid_no_random_test.cpp. No test source stands for
nothing, and each is compiled: its folder's CMakeLists.txt names it.
"""

import os
import sys

import tree

# Members of a class that are defined on a higher floor. They are tested in their class's test file.
UPSTAIRS = {
    "nelvo/core/exc/exc_buffer",
    "nelvo/core/exc/exc_wide",
    "nelvo/fs/path_utils_info",
    "nelvo/logging/receiver/log_size_check",
    "nelvo/monitoring/thread_dump",
}

# Folders of tests/ whose tests are not about one component.
OF_THEIR_OWN = ("tests/checks/", "tests/faults/", "tests/programs/", "tests/run/", "tests/support/")

_SUFFIX = "_test.cpp"


def components(root, folder):
    return {os.path.splitext(path)[0]
            for path in tree.files(root, folder) if path.endswith((".h", ".cpp"))}


def test_of(source):
    return "tests/" + source.removeprefix("nelvo/") + _SUFFIX


def mirrors_one_of(test, wanted):
    words = test.removesuffix(_SUFFIX).split("_")
    return any("_".join(words[:count]) + _SUFFIX in wanted for count in range(1, len(words) + 1))


def is_compiled(root, test):
    lists = os.path.join(os.path.dirname(test), "CMakeLists.txt")
    if not os.path.isfile(os.path.join(root, lists)):
        return False
    return os.path.basename(test) in tree.read(root, lists).replace(")", " ").split()


def check(root):
    wanted = {test_of(source) for source in components(root, "nelvo") - UPSTAIRS}
    possible = wanted | {test_of(source) for source in components(root, "tool")}
    there = {path for path in tree.files(root, "tests") if path.endswith(_SUFFIX)}
    mirrors = {path for path in there if not path.startswith(OF_THEIR_OWN)}
    return ([f"{path}: missing" for path in sorted(wanted - there)]
            + [f"{path}: mirrors no source" for path in sorted(mirrors) if not mirrors_one_of(path, possible)]
            + [f"{path}: its folder's CMakeLists.txt does not name it"
               for path in sorted(there) if not is_compiled(root, path)])


if __name__ == "__main__":
    tree.finish("mirror", check(sys.argv[1]))
