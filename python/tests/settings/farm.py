"""What docs/farm.md takes for granted: a library of files, a function, and clusters, all of them in this process."""

import pathlib
import shutil
import sys
import types

import distributed
import fsspec
from fsspec.implementations.memory import MemoryFileSystem


def local_client(*address: str) -> distributed.Client:
    return distributed.Client(processes=False, n_workers=1, threads_per_worker=1, dashboard_address=None)


class Cluster:
    """In place of one that starts jobs."""

    def __init__(self, **options: object) -> None:
        pass

    def adapt(self, minimum_jobs: int, maximum_jobs: int) -> None:
        assert minimum_jobs < maximum_jobs

    def get_client(self) -> distributed.Client:
        return client


def my_function(path: str) -> int:
    return len(pathlib.Path(path).read_bytes())


def module(name: str, **members: object) -> None:
    sys.modules[name] = types.ModuleType(name)
    vars(sys.modules[name]).update(members)


client = local_client()
module("distributed", Client=lambda address: client)
module("dask_jobqueue", SLURMCluster=Cluster)
module("dask_kubernetes")
module("dask_kubernetes.operator", KubeCluster=Cluster)
paths = ["lib"]
pathlib.Path("lib/street").mkdir(parents=True)
shutil.copy("city.vrn", "lib/street/a.vrn")
shutil.copy("city.vrn", "lib/b.vrn")


class Store(MemoryFileSystem):
    """In place of one on the network."""

    protocol = "s3"


fsspec.register_implementation("s3", Store)
fsspec.open("s3://lib/a.vrn", "wb").open().close()
