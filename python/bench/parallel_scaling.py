#!/usr/bin/python3
"""Weak scaling of the distributed operations: the same elements per rank on 1 and on N ranks.

    mpirun -np 1 /usr/bin/python3 python/bench/parallel_scaling.py [cells per rank side]
    mpirun -np 2 /usr/bin/python3 python/bench/parallel_scaling.py [cells per rank side]

Each rank holds an n x n block of quadrangles of one long strip of blocks, so
every interface is one line of n edges. Prints, on rank 0, the time of the
first call (which also finds the interface and sets up the ghost layer) and
the best of 5 later calls of each operation, and the bytes each rank sent
(pickled payloads of its messages) in the first and in a later call.
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
        if name in ("allgather", "alltoall", "gather", "bcast", "scatter", "allreduce", "exscan", "isend"):
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
    for name, make, call in (("raise_order", lambda: parallel.DistributedMesh(comm, xyz[:, :2].copy(), conn, gid),
                               parallel.raise_order),
                              ("normals", lambda: parallel.DistributedMesh(comm, xyz, conn, gid), parallel.normals)):
        dm = make()
        times, sent = [], []
        for _ in range(6):
            comm.sent = 0
            comm.Barrier()
            start = time.perf_counter()
            call(dm)
            comm.Barrier()
            times.append(time.perf_counter() - start)
            sent.append(comm.sent)
        sent = comm.comm.gather(sent)
        if comm.rank == 0:
            first, later = times[0], min(times[1:])
            print(f"{name:12s} {comm.size} ranks x {len(conn)} Q4: first {first:7.3f} s, later {later:7.3f} s "
                  f"({later / len(conn) * 1e9:6.1f} ns/element); sent per rank: first "
                  f"{max(s[0] for s in sent) / 1e3:8.1f} kB, later {max(s[-1] for s in sent) / 1e3:8.1f} kB", flush=True)


if __name__ == "__main__":
    main()
