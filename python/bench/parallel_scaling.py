#!/usr/bin/python3
"""Weak scaling of the distributed operations: the same elements per rank on 1 and on N ranks.

    mpirun -np 2 /usr/bin/python3 python/bench/parallel_scaling.py [cells per rank side]

Each rank holds an n x n block of quadrangles of one long strip of blocks, so
every interface is one line of n edges. In one run, rank 0 first works alone
on its block (a communicator of one rank, the others waiting without spinning)
and then all ranks work together; both take the best of several calls, taken
in turns so that the machine's other load weighs on both alike. Prints the
times, their ratio (the weak-scaling efficiency), the time of the bare library
call on every rank at once with nothing exchanged (what the machine allows
N ranks: they share its memory bandwidth, and its processors with other
work), the first call's time
(which also finds the interface and sets up the ghost layer) and the bytes
each rank sent (pickled payloads of its messages) in the first and in a
later call.
"""
import pickle
import sys
import time

import numpy as np
from mpi4py import MPI

import tesskit2d as tk
from tesskit2d import parallel


class Counting:
    """MPI's communicator, counting the bytes this rank hands to its messages."""

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


def idle(world):
    """Waits for every rank without spinning, so that a rank working alone has the processor."""
    request = world.Ibarrier()
    while not request.Test():
        time.sleep(0.001)


def timed(comm, call, dm, calls=3):
    """(the best time of ``calls`` calls, the bytes this rank sent in the last one)."""
    best = np.inf
    for _ in range(calls):
        comm.sent = 0
        idle(comm.comm)
        start = time.perf_counter()
        call(dm)
        idle(comm.comm)
        best = min(best, time.perf_counter() - start)
    return best, comm.sent


def main():
    n = int(sys.argv[1]) if len(sys.argv) > 1 else 500
    world = MPI.COMM_WORLD
    xyz, conn, gid = block(n, world.rank)
    ops = (("raise_order", lambda c: parallel.DistributedMesh(c, xyz[:, :2].copy(), conn, gid), parallel.raise_order,
            lambda dm: tk.convert_into_quadratic(dm.coords, dm.conn)),
           ("normals", lambda c: parallel.DistributedMesh(c, xyz, conn, gid), parallel.normals,
            lambda dm: tk.normals(dm.coords, dm.conn, 1.0, True)))
    for name, make, call, bare in ops:
        alone, together = Counting(MPI.COMM_SELF), Counting(world)
        single, shared = make(alone), make(together)
        if world.rank == 0:
            call(single)
        idle(world)
        start = time.perf_counter()
        together.sent = 0
        call(shared)  # the first call: the interface and the ghost layer are set up here
        first = time.perf_counter() - start
        first_sent = world.gather(together.sent)
        t1 = t2 = t0 = np.inf
        for _ in range(3):
            if world.rank == 0:
                t1 = min(t1, timed(alone, call, single)[0])
            idle(world)
            t, sent = timed(together, call, shared)
            t2 = min(t2, t)
            # The library's own call on every rank at once, nothing exchanged: what the machine
            # allows N ranks (they share memory bandwidth, and the processors with other work).
            t0 = min(t0, timed(together, bare, shared)[0])
        sent = world.gather(sent)
        if world.rank == 0:
            print(f"{name:12s} {len(conn)} Q4 per rank: 1 rank {t1:.4f} s, {world.size} ranks {t2:.4f} s, "
                  f"efficiency {t1 / t2:5.1%}; the bare library call on {world.size} ranks at once {t0:.4f} s "
                  f"(the machine's bound {t1 / t0:5.1%}); first call {first:.3f} s; sent per rank: first "
                  f"{max(first_sent) / 1e3:.1f} kB, later {max(sent) / 1e3:.1f} kB", flush=True)


if __name__ == "__main__":
    main()
