"""The documented Dask recipe (examples/python/dask_audit.py), run on a cluster of worker processes,
gives the records of the local audit."""

import dataclasses
import importlib.util
import logging
import os
import sys

import pytest

import kovamapping
from conftest import ROOT, document_files

distributed = pytest.importorskip("distributed")
cloudpickle = pytest.importorskip("cloudpickle")


def load_recipe():
    """The recipe as shipped; the workers get it (and this module) by value, as they cannot import it."""
    found = importlib.util.spec_from_file_location("dask_audit", ROOT / "examples" / "python" / "dask_audit.py")
    module = importlib.util.module_from_spec(found)
    sys.modules["dask_audit"] = module
    found.loader.exec_module(module)
    cloudpickle.register_pickle_by_value(module)
    return module


recipe = load_recipe()
cloudpickle.register_pickle_by_value(sys.modules[__name__])


def object_count(source):
    """The number of objects of a document, read on a worker (kovamapping.Error when it does not read)."""
    return len(kovamapping.read(source))

# The cluster's event loop warns of tornado's deprecations on this Python; they are not ours.
pytestmark = pytest.mark.filterwarnings("ignore::DeprecationWarning")


@pytest.fixture(scope="module")
def client(tmp_path_factory):
    cluster = distributed.LocalCluster(n_workers=2, processes=True, threads_per_worker=1, dashboard_address=None,
                                       silence_logs=logging.ERROR,
                                       local_directory=str(tmp_path_factory.mktemp("dask")))
    client = distributed.Client(cluster)
    try:
        yield client
    finally:
        client.close()
        cluster.close()


def without_time(records) -> list:
    return [dataclasses.replace(record, seconds=0.0) for record in records]


def documents(examples, test_data) -> list:
    return document_files(examples, test_data / "documents", test_data / "hostile")


def test_the_cluster_has_two_worker_processes(client):
    pids = client.run(os.getpid)
    assert len(pids) == 2
    assert len(set(pids.values())) == 2 and os.getpid() not in pids.values()


def test_an_audit_by_path_on_the_cluster_gives_the_local_records(client, examples, test_data):
    paths = documents(examples, test_data)
    on_cluster = recipe.audit_documents(client, paths, batch_size=8)
    local = list(kovamapping.audit(paths))
    assert without_time(on_cluster) == without_time(local)
    assert any(r.ok for r in local) and any(not r.ok for r in local)


def test_an_audit_of_bytes_on_the_cluster_gives_the_local_records(client, examples, test_data):
    named = [(path.name, path.read_bytes()) for path in documents(examples, test_data)]
    bare = [data for _, data in named[:10]]
    on_cluster = recipe.audit_documents(client, named + bare, batch_size=8)
    local = list(kovamapping.audit(named + bare))
    assert without_time(on_cluster) == without_time(local)
    assert [r.path for r in on_cluster] == [name for name, _ in named] + [None] * 10


def test_an_error_raised_on_a_worker_arrives_with_its_status_and_messages(client):
    assert client.submit(object_count, b'{"version": 12, "References": []}').result() == 0
    future = client.submit(object_count, '{"version": 11, "References": [{"kOVAId": "a", "PlexoId": "p"}]}')
    with pytest.raises(kovamapping.Error) as raised:
        future.result()
    assert raised.value.status == 0x80004005
    assert raised.value.messages == ["UNVALUATED MANDATORY FIELD IsLocal",
                                     "UNVALUATED MANDATORY FIELD KOVASynchroStamp"]
