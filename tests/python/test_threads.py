"""Batches run with the interpreter lock released, and calls from several
threads take turns in the engine without disturbing each other."""

import sys
import threading
import time

import numpy as np
import pytest

from conftest import REFLECTANCE_FILES, bits, sample


def runs_beside(qvi, monkeypatch, name, call):
    """Whether this thread runs while `call` runs in another thread and is
    inside the extension's function `name`.

    The switch interval is made so long that no thread is ever asked to
    give up the interpreter lock: this thread gets the lock only when the
    other one releases it of its own accord. It waits for the lock again and
    again until it sees the other thread inside the extension's function,
    or finished. A function that keeps the lock cannot be seen inside: this
    is never true for it. A function that releases it is seen inside unless
    it ends before this thread wakes up, so the calls are long and the
    check is made up to five times."""
    inside = []
    function = getattr(qvi._core, name)

    def marked(*arguments):
        inside.append(True)
        try:
            return function(*arguments)
        finally:
            inside.clear()

    monkeypatch.setattr(qvi._core, name, marked)
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000.0)
    try:
        for _ in range(5):
            finished = []

            def work():
                call()
                finished.append(True)

            worker = threading.Thread(target=work)
            worker.start()
            seen = False
            while not finished and not seen:
                seen = bool(inside)
                time.sleep(0.0001)
            worker.join()
            if seen:
                return True
        return False
    finally:
        sys.setswitchinterval(interval)


@pytest.fixture(scope="module")
def spectra(qvi):
    measurements = qvi.read_cgats(sample("munsell_matt_1269.cgats"))
    return np.ascontiguousarray(np.tile(measurements.spectra, (200, 1)))


def test_the_check_sees_a_call_that_keeps_the_lock(qvi, monkeypatch):
    """A function that holds the lock throughout is never seen from beside
    it (the check itself can fail)."""
    def busy(*arguments):
        total = 0
        for i in range(300000):
            total += i
        return total

    monkeypatch.setattr(qvi._core, "supported_values", busy, raising=True)
    assert not runs_beside(qvi, monkeypatch, "supported_values", lambda: qvi._core.supported_values("x"))


@pytest.mark.parametrize("function,name", [("color", "color"), ("delta_e", "delta_e"), ("density", "density"),
                                           ("density_filter", "density"), ("cct", "cct"),
                                           ("lab_to_spectrum", "lab_to_spectrum"), ("read_cgats", "read_cgats"),
                                           ("measure_conditions", "condition_values")])
def test_every_call_releases_the_lock(qvi, monkeypatch, spectra, function, name):
    lab = qvi.color(spectra[:300])
    calls = {
        "color": lambda: qvi.color(spectra),
        "delta_e": lambda: qvi.delta_e(spectra[0], spectra, "CIEDE2000"),
        "density": lambda: qvi.density(spectra, white_base="Absolute"),
        "density_filter": lambda: qvi.density_filter(spectra[:50000], white_base="Absolute"),
        "cct": lambda: qvi.cct(spectra[:5000], illuminant="D65"),
        "lab_to_spectrum": lambda: qvi.lab_to_spectrum(lab),
        "read_cgats": lambda: qvi.read_cgats(sample("munsell_matt_1269.cgats")),
        "measure_conditions": lambda: [qvi.measure_conditions(illuminant="D50") for _ in range(2000)],
    }
    assert runs_beside(qvi, monkeypatch, name, calls[function])


def test_threads_computing_at_once_get_what_each_gets_alone(qvi):
    """Eight threads at once, each with other conditions, and some with a
    paper white of their own: every result equals the one computed alone,
    and no paper white reaches another call."""
    measurements = qvi.read_cgats(sample("chart24_babelcolor_avg.cgats"))
    spectra = np.ascontiguousarray(np.tile(measurements.spectra, (200, 1)))
    white = measurements.spectra[measurements.ids.index("19")]
    jobs = [
        lambda: qvi.color(spectra, illuminant="D50"),
        lambda: qvi.color(spectra, illuminant="A", observer="TenDegree"),
        lambda: qvi.color(spectra, paper_white=white),
        lambda: qvi.color(spectra, "CIEXYZ", illuminant="F11"),
        lambda: qvi.delta_e(spectra[0], spectra, "CMC", parameters=(2, 1)),
        lambda: qvi.density(spectra, paper_white=white, white_base="Paper"),
        lambda: qvi.density(spectra, white_base="Absolute", density_standard="ANSIT"),
        lambda: qvi.delta_e(spectra, spectra[5], paper_white=white, illuminant="D65"),
    ]
    alone = [job() for job in jobs]
    results = [[] for _ in jobs]
    errors = []

    def run(index):
        try:
            for _ in range(4):
                results[index].append(jobs[index]())
        except Exception as error:  # reported below
            errors.append(error)

    threads = [threading.Thread(target=run, args=(index,)) for index in range(len(jobs))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not errors
    for index, expected in enumerate(alone):
        assert len(results[index]) == 4
        for result in results[index]:
            np.testing.assert_array_equal(bits(result), bits(expected))


def test_a_paper_white_serves_only_its_own_call(qvi):
    measurements = qvi.read_cgats(sample(REFLECTANCE_FILES[0]))
    white = measurements.spectra[measurements.ids.index("19")]
    qvi.density(measurements.spectra, paper_white=white, white_base="Automatic")
    with pytest.raises(qvi.CMetryError, match="Missing WhiteReference"):
        qvi.density(measurements.spectra, white_base="Automatic")
    relative = qvi.color(measurements.spectra, paper_white=white)
    assert not np.array_equal(relative, qvi.color(measurements.spectra))
    # White base Paper without a paper white of the call: refused, not based
    # on an earlier call's paper.
    with pytest.raises(qvi.CMetryError, match="CMetryCalculator"):
        qvi.color(measurements.spectra, white_base="Paper")
