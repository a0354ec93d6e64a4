# SPDX-License-Identifier: Apache-2.0
"""Several processes, several interpreters, and what goes from one to the other."""

import multiprocessing
import os
import pickle
import subprocess
import sys
import textwrap

import numpy as np
import pytest
import valuenodes as vn
from conftest import same


def run(code, timeout=120, **environment):
    return subprocess.run(
        [sys.executable, "-c", textwrap.dedent(code)],
        capture_output=True,
        text=True,
        timeout=timeout,
        env={**os.environ, **environment},
    )


class Doubles(vn.Node):
    def evaluate(self, image):
        return image * 2


def work(task):
    """Something of every kind that goes to another process and comes back."""
    kind, given = task
    if kind == "square":
        return vn.multiply(given, given)
    if kind == "gradient":
        return vn.gradient(given)
    if kind == "graph":
        graph, image = given
        graph.set("sum.constant", 3)
        return graph, graph.evaluate("sum.image", inputs={"height": image})
    if kind == "class":
        return vn.apply(vn.register(Doubles, replace=True), given)
    if kind == "node error":
        return vn.add(vn.Image(np.zeros((0, 3), np.float32)))
    if kind == "document error":
        return vn.Graph.from_dict({"format": "value-graph", "version": 2, "nodes": [{"id": "a"}, {"id": "b"}]})
    return vn.read(given)


@pytest.mark.parametrize("method", ["fork", "spawn", "forkserver"])
def test_other_processes_take_and_give(method, tmp_path):
    array = np.arange(120_000, dtype=np.float32).reshape(300, 400)
    image = vn.Image(array, pin=(3, 4), range=(0, 9))
    graph = vn.Graph()
    graph.add("Reroute", "height")
    graph.add("Value Add", "sum")
    graph.connect("height.image", "sum.image")
    # This process has threads of its own before it forks.
    vn.relief(image, radius=3)
    with multiprocessing.get_context(method).Pool(2) as pool:
        tasks = [("square", image), ("gradient", array), ("graph", (graph, image)), ("class", array)]
        results = pool.map(work, tasks, 1)
        errors = []
        for task in (("node error", None), ("document error", None), ("read", str(tmp_path / "none.exr"))):
            with pytest.raises(vn.ValueNodesError) as caught:
                pool.apply(work, (task,))
            errors.append(caught.value)
    square, gradient, (changed, sums), doubled = results
    assert same(square, array * array) and square.pin == (3, 4)
    assert gradient._fields == ("output_x", "output_y") and gradient == vn.gradient(array)
    assert changed.get("sum.constant") == 3 and graph.get("sum.constant") == 0
    assert same(sums, array + 3)
    assert same(doubled, array * 2)
    node, document, file = errors
    assert type(node) is vn.NodeError and "no image has any pixels" in str(node)
    assert type(document) is vn.DocumentError and len(document.problems) == 2
    assert type(file) is vn.MissingFileError and file.filename.endswith("none.exr") and "none.exr" in str(file)


@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_errors_are_pickled_whole(protocol, tmp_path):
    graph = vn.Graph()
    graph.add("Image Reader", "height", path=str(tmp_path / "none.exr"))
    graph.add_output("height.image", tmp_path / "out.exr")
    with pytest.raises(vn.FileError) as caught:
        graph.run()
    restored = pickle.loads(pickle.dumps(caught.value, protocol))
    assert str(restored) == str(caught.value)
    assert restored.problems == caught.value.problems != () and restored.written == ()


def test_process_forked_while_threads_compute_goes_on():
    answer = run(
        """
        import os, signal, sys, threading, warnings
        import numpy as np
        import valuenodes as vn

        large = np.random.default_rng(1).random((512, 512), dtype=np.float32)
        expected = np.asarray(vn.relief(large[:64], radius=4)).tobytes()
        # Python 3.13 warns of what this is about.
        warnings.simplefilter("ignore", DeprecationWarning)
        ending = threading.Event()

        def compute():
            while not ending.is_set():
                vn.relief(large, radius=5)
                vn.Image(large.astype(np.float64))

        threads = [threading.Thread(target=compute) for _ in range(3)]
        for thread in threads:
            thread.start()
        for turn in range(10):
            child = os.fork()
            if child == 0:
                signal.alarm(60)
                right = np.asarray(vn.relief(large[:64], radius=4)).tobytes() == expected
                os._exit(0 if right else 1)
            status = os.waitpid(child, 0)[1]
            if status != 0:
                print("turn", turn, "ended with", status)
        ending.set()
        for thread in threads:
            thread.join()
        print("done")
        """
    )
    assert (answer.stdout, answer.stderr) == ("done\n", "")


def test_forked_process_reads_and_writes_and_has_no_device(tmp_path):
    answer = run(
        f"""
        import os, pathlib, signal, sys
        import numpy as np
        import valuenodes as vn

        folder = pathlib.Path({str(tmp_path)!r})
        array = np.random.default_rng(1).random((1024, 1024), dtype=np.float32)

        def use_files(name):
            for ending in ("exr", "png", "tif"):
                vn.write(folder / f"{{name}}.{{ending}}", array, "half" if ending == "exr" else None)
                assert np.allclose(vn.read(folder / f"{{name}}.{{ending}}"), array, atol=1e-3)

        use_files("parent")
        vn.ambient_occlusion(array[:64], radius=3)
        child = os.fork()
        if child == 0:
            signal.alarm(60)
            use_files("child")
            try:
                vn.ambient_occlusion(array[:64], radius=3)
            except vn.NodeError as error:
                print(error, flush=True)
            os._exit(0)
        print(os.waitpid(child, 0)[1])
        use_files("again")
        vn.ambient_occlusion(array[:64], radius=3)
        print("done")
        """
    )
    lines = answer.stdout.splitlines()
    assert lines[1:] == ["0", "done"], answer.stdout + answer.stderr
    assert lines[0].startswith("ambient_occlusion: OpenCL devices work in the process that has opened them")


SUBINTERPRETER = """
    import _xxsubinterpreters as interpreters
    {first}
    other = interpreters.create()
    interpreters.run_string(other, '''
    try:
        import valuenodes
    except ImportError as error:
        print(error)
    ''')
    interpreters.destroy(other)
    import numpy as np
    import valuenodes as vn
    print(np.asarray(vn.add(np.ones((1, 2), np.float32), 1)))
"""


@pytest.mark.skipif(sys.version_info >= (3, 13), reason="they have another module there")
@pytest.mark.parametrize("first", ["import valuenodes", ""])
def test_subinterpreters_are_refused(first):
    code = textwrap.dedent(SUBINTERPRETER).replace("{first}", first)
    answer = run(code)
    assert answer.returncode == 0, answer.stderr
    assert answer.stdout == (
        "valuenodes works in the main interpreter of a process alone, not in a subinterpreter\n[[2. 2.]]\n"
    )


def test_process_may_end_while_threads_evaluate_classes_and_graphs():
    answer = run(
        """
        import threading
        import numpy as np
        import valuenodes as vn

        @vn.register
        class Slow(vn.Node):
            def evaluate(self, image):
                return np.sort(image, 1) + 1

        large = np.random.default_rng(1).random((512, 512), dtype=np.float32)
        begun = threading.Barrier(5)

        def work():
            graph = vn.Graph()
            graph.add("Reroute", "height")
            graph.add("Slow", "slow")
            graph.add("Relief", "relief", radius=20)
            graph.connect("height.image", "slow.image")
            graph.connect("slow.image", "relief.image")
            begun.wait()
            while True:
                graph.evaluate("relief.image", inputs={"height": large}, progress=lambda *told: None)

        for _ in range(4):
            threading.Thread(target=work, daemon=True).start()
        begun.wait()
        vn.relief(large, radius=10)
        """
    )
    assert (answer.returncode, answer.stderr) == (0, "")
