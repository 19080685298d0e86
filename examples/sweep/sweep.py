"""A parameter sweep: vapour pressure, liquid density and heat of vaporisation of all bundled compounds at many
temperatures, on Dask's scheduler. It needs the packages qscontainers and distributed. Started again, it makes only what
is missing.

    python sweep.py FOLDER [--temperatures 1000000] [--workers 4]      0 workers: all in this process
"""
import argparse
import time

import distributed
import numpy
from qscontainers.sweep import sweep

KEYS = ("VP", "LDN", "HVP")

if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--temperatures", type=int, default=1_000_000)
    parser.add_argument("--workers", type=int, default=4)
    given = parser.parse_args()
    where = {"n_workers": given.workers, "threads_per_worker": 1} if given.workers else {"processes": False}
    start = time.perf_counter()
    with distributed.Client(dashboard_address=None, **where) as client:
        made = sweep(client, given.folder, KEYS, numpy.linspace(200.0, 700.0, given.temperatures))
    print(f"{len(made)} files in {time.perf_counter() - start:.1f} s")
