"""Properties of many compounds at many temperatures, by Dask's distributed scheduler: on one process or on a cluster
whose workers share a folder. The extra `dask` installs what it needs.

    with distributed.Client(n_workers=4, threads_per_worker=1) as client:
        sweep(client, "results", keys=["VP", "LDN"], temperatures=numpy.linspace(250, 650, 1_000_000))
"""
from __future__ import annotations

import functools
import hashlib
import json
import os
import uuid
from collections.abc import Iterable, Sequence
from typing import Any

import distributed
import numpy

from ._compound import DATABASE, all_compounds, by_number, compound
from ._property import STANDARD_PRESSURE, policy_of

# An element of a result: a number, NaN where there is none, and the sum of what is known of it (`Status`).
RESULT = numpy.dtype([("value", "<f8"), ("status", "<i4")])
TEMPERATURES, DESCRIPTION, UNFINISHED = "temperatures.npy", "sweep.json", ".part"


def sweep(client: distributed.Client, folder: str | os.PathLike[str], keys: Sequence[str], temperatures: Any,
          compounds: Iterable[Any] | None = None, P: float = STANDARD_PRESSURE, policy: int | None = None,
          database: str | os.PathLike[str] = DATABASE, retries: int = 3) -> list[str]:
    """Evaluates properties of compounds, by name or number, of all unless they are given, at temperatures in K, and
    returns the files that it made.

    The folder gets a file for each compound and key, `NUMBER-KEY.npy` with elements of `RESULT`, and the temperatures.
    A file is complete or absent, and the same whatever the workers are. Files that are there already are not made
    again; a folder with another sweep's is refused. The work of workers that end goes to others.
    """
    folder, database = os.path.abspath(folder), os.path.abspath(database)
    numbers: list[Any] = [each.number for each in all_compounds(database)] if compounds is None else \
        [which if isinstance(which, int) else compound(which, database).number for which in compounds]
    prepare(folder, numpy.ascontiguousarray(temperatures, "<f8"), P, policy_of(policy), database)
    names = {result_name(number, key): (number, key) for number in numbers for key in keys}
    there = set(os.listdir(folder))
    missing = [name for name in names if name not in there]
    made = client.map(evaluate, missing, *zip(*(names[name] for name in missing)), folder=folder, P=P,
                      policy=int(policy_of(policy)), database=database, pure=False, retries=retries) if missing else []
    files = [os.path.join(folder, name) for name in client.gather(made)]
    remove_unfinished(folder)
    return files


def result_name(number: int, key: str) -> str:
    return f"{number}-{key}.npy"


def prepare(folder: str, temperatures: Any, P: float, policy: int, database: str) -> None:
    """Makes the folder of a sweep, or sees that it has the same one."""
    os.makedirs(folder, exist_ok=True)
    digest = hashlib.sha256(temperatures.tobytes())
    for name in sorted(os.listdir(database)):
        with open(os.path.join(database, name), "rb") as part:
            digest.update(part.read())
    description = {"pressure": P, "policy": int(policy), "temperatures_and_database": digest.hexdigest()}
    try:
        with open(os.path.join(folder, DESCRIPTION), encoding="utf-8") as file:
            if json.load(file) != description:
                raise ValueError(f"{folder} has the results of another sweep")
    except FileNotFoundError:
        replace(folder, TEMPERATURES, lambda file: numpy.save(file, temperatures))
        replace(folder, DESCRIPTION, lambda file: file.write(json.dumps(description).encode()))
    remove_unfinished(folder)


def remove_unfinished(folder: str) -> None:
    """Takes away what workers that were killed left."""
    for name in os.listdir(folder):
        if name.endswith(UNFINISHED):
            os.remove(os.path.join(folder, name))


def replace(folder: str, name: str, write: Any) -> None:
    """Writes a file that is complete or absent."""
    unfinished = os.path.join(folder, f"{name}.{uuid.uuid4().hex}{UNFINISHED}")
    with open(unfinished, "wb") as file:
        write(file)
        file.flush()
        os.fsync(file.fileno())
    os.replace(unfinished, os.path.join(folder, name))


@functools.lru_cache(1)
def temperatures_of(folder: str, digest: str) -> Any:
    return numpy.load(os.path.join(folder, TEMPERATURES))


def evaluate(name: str, number: int, key: str, folder: str, P: float, policy: int, database: str) -> str:
    """Makes one file; runs on a worker."""
    with open(os.path.join(folder, DESCRIPTION), encoding="utf-8") as file:
        temperatures = temperatures_of(folder, file.read())
    evaluated = by_number(number, database).property(key)
    results = numpy.empty(temperatures.shape, RESULT)
    results["value"] = evaluated(temperatures, P, policy=policy)
    results["status"] = evaluated.status(temperatures, P, policy=policy)
    replace(folder, name, lambda file: numpy.save(file, results))
    return name
