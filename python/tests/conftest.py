import pytest

import qscontainers as qs


@pytest.fixture
def water():
    return qs.compound("water")


@pytest.fixture(autouse=True)
def options():
    """Whatever a test sets holds for it alone."""
    before = vars(qs.options).copy()
    yield qs.options
    vars(qs.options).update(before)
