#!/usr/bin/python3
"""Weak scaling of the distributed operations: the same elements per rank on 1 and on N ranks.

    mpirun -np 1 /usr/bin/python3 python/bench/parallel_scaling.py [cells per rank side]
    mpirun -np 2 /usr/bin/python3 python/bench/parallel_scaling.py [cells per rank side]

Each rank holds an n x n block of quadrangles of one long strip of blocks, so
every interface is one line of n edges. Prints the best of 5 times of each
operation on rank 0 and the bytes each rank sent (pickled payloads of the
collective calls).
"""
import pickle
import sys
import time

import numpy as np
from mpi4py import MPI

from tesskit2d import parallel


class Counting:
    """MPI's communicator, counting the bytes this rank hands to collective calls."""

    def __init__(self, comm):
        self.comm, self.sent = comm, 0

    def __getattr__(self, name):
        call = getattr(self.comm, name)
        if name in ("allgather", "gather", "bcast", "scatter", "allreduce", "exscan"):
            def counted(obj, *args, **kwargs):
                self.sent += len(pickle.dumps(obj))
                return call(obj, *args, **kwargs)
            return counted
        return call


def block(n, rank):
    """Rank's n x n block of the strip, with global node IDs along the strip."""
    width = n + 1
    x, y = np.meshgrid(np.arange(width) + rank * n, np.arange(width))
    gid = (y * 1_000_000 + x).ravel().astype(np.uint64)  # unique along any strip
    xy = np.c_[x.ravel(), y.ravel()].astype(float) / n
    xyz = np.c_[xy, 0.1 * np.sin(xy[:, 0] * 3)]
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * width + i).ravel()
    conn = np.c_[a, a + 1, a + width + 1, a + width].astype(np.uint32)
    return xyz, conn, gid


def main():
    n = int(sys.argv[1]) if len(sys.argv) > 1 else 700
    comm = Counting(MPI.COMM_WORLD)
    xyz, conn, gid = block(n, comm.rank)
    dm = parallel.DistributedMesh(comm, np.ascontiguousarray(xyz[:, :2]), conn, gid)
    surface = parallel.DistributedMesh(comm, xyz, conn, gid)
    for name, call in (("raise_order", lambda: parallel.raise_order(dm)), ("normals", lambda: parallel.normals(surface))):
        times = []
        comm.sent = 0
        for _ in range(5):
            comm.Barrier()
            start = time.perf_counter()
            call()
            comm.Barrier()
            times.append(time.perf_counter() - start)
        sent = comm.comm.gather(comm.sent // 5)
        if comm.rank == 0:
            print(f"{name:12s} {comm.size} ranks x {len(conn)} Q4: {min(times):7.3f} s, "
                  f"{min(times) / len(conn) * 1e9:6.1f} ns/element, sent per rank {max(sent) / 1e6:7.2f} MB")


if __name__ == "__main__":
    main()
