import hashlib
import os
import pathlib
import threading
import time

import pytest

import qscontainers as qs

numpy, distributed = pytest.importorskip("numpy"), pytest.importorskip("distributed")
from qscontainers import sweep as module  # noqa: E402

TEMPERATURES = numpy.linspace(200.0, 700.0, 10_000)
KEYS = ["VP", "LDN", "HVP"]


def digests(folder):
    return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in pathlib.Path(folder).iterdir()}


@pytest.fixture(scope="module")
def alone(tmp_path_factory):
    """What one process makes."""
    folder = tmp_path_factory.mktemp("alone")
    with distributed.Client(processes=False, dashboard_address=None) as client:
        made = module.sweep(client, folder, KEYS, TEMPERATURES)
        assert len(made) == 54 * 3 and module.sweep(client, folder, KEYS, TEMPERATURES) == []
        with pytest.raises(ValueError, match="another sweep"):
            module.sweep(client, folder, KEYS, TEMPERATURES, P=200.0)
    return folder


def test_results_are_those_of_the_package(alone):
    found = numpy.load(alone / "19-VP.npy")
    water = qs.compound(19)
    assert numpy.array_equal(found["value"], water.VP(TEMPERATURES), equal_nan=True)
    assert numpy.array_equal(found["status"], water.VP.status(TEMPERATURES))
    assert set(digests(alone)) == {"temperatures.npy", "sweep.json"} | {
        f"{each.number}-{key}.npy" for each in qs.all_compounds() for key in KEYS}


def test_four_workers_one_of_which_is_killed(alone, tmp_path):
    killed = []
    with distributed.Client(n_workers=4, threads_per_worker=1, dashboard_address=None) as client:
        def kill():
            while len(os.listdir(tmp_path)) < 20:
                time.sleep(0.005)
            worker = next(iter(client.cluster.workers.values()))
            killed.append(worker.process.pid)
            os.kill(worker.process.pid, 9)

        killer = threading.Thread(target=kill)
        killer.start()
        module.sweep(client, tmp_path, KEYS, TEMPERATURES)
        killer.join()
    assert killed and digests(tmp_path) == digests(alone)


def test_a_run_that_is_started_again_makes_what_is_missing(alone, tmp_path):
    with distributed.Client(processes=False, dashboard_address=None) as client:
        module.sweep(client, tmp_path, KEYS[:1], TEMPERATURES, compounds=["water", 3])
        before = (tmp_path / "19-VP.npy").stat().st_mtime_ns
        (tmp_path / "3-VP.npy").unlink()
        (tmp_path / "3-VP.npy.1234.part").write_bytes(b"of a worker that was killed")
        made = module.sweep(client, tmp_path, KEYS, TEMPERATURES)
    assert len(made) == 54 * 3 - 1 and (tmp_path / "19-VP.npy").stat().st_mtime_ns == before
    assert digests(tmp_path) == digests(alone)
