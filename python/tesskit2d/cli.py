"""The command ``tesskit2d``: the library's operations on mesh files.

Each subcommand reads a mesh file, calls the library and writes a mesh file
whose point and cell data carry the results (so they open in ParaView), or
prints a report. Lengths are in the file's units, angles in degrees unless an
option says otherwise. A bad file or option ends with one line on stderr and
exit status 2.
"""
from __future__ import annotations

import argparse
import sys
import time
from typing import List, Optional

import numpy as np

import tesskit2d as tk

from . import extras, files
from .files import NULL, SURFACE_KINDS, FileError, Mesh, summary, write


class _Bar:
    """A progress bar on stderr, drawn once reading has taken a second, so small files stay quiet."""

    def __init__(self, path: str):
        self.path, self.start, self.drawn = path, time.monotonic(), False

    def __call__(self, fraction: float) -> None:
        if self.drawn or time.monotonic() - self.start > 1.0:
            self.drawn = True
            filled = int(30 * fraction)
            sys.stderr.write(f"\rreading {self.path} [{'#' * filled}{' ' * (30 - filled)}] {100 * fraction:3.0f}%")
            sys.stderr.flush()

    def close(self) -> None:
        if self.drawn:
            sys.stderr.write("\n")


def read(path: str) -> Mesh:
    """Reads a mesh file, with a progress bar when stderr is a terminal and the file takes a while."""
    bar = _Bar(path) if sys.stderr.isatty() else None
    try:
        return files.read(path, bar)
    finally:
        if bar is not None:
            bar.close()


class UsageError(Exception):
    """A bad option value, found after parsing."""


class _Parser(argparse.ArgumentParser):
    def error(self, message):  # one line, exit 2, as for a bad file
        sys.stderr.write(f"tesskit2d: {message}\n")
        sys.exit(2)


def _vector(text: str) -> List[float]:
    try:
        return [float(v) for v in text.split(",")]
    except ValueError:
        raise argparse.ArgumentTypeError(f"'{text}' is not a comma-separated list of numbers") from None


def _extend(point_data: dict, n_new: int) -> dict:
    """Point data for nodes added behind the old ones: tags continue, other values are NaN or 0."""
    out = {}
    for name, values in point_data.items():
        values = np.asarray(values)
        if name == "gmsh:node_tag":
            start = values.max(initial=0) + 1
            pad = np.arange(start, start + n_new, dtype=values.dtype)
        else:
            fill = np.nan if values.dtype.kind == "f" else 0
            pad = np.full((n_new,) + values.shape[1:], fill, dtype=values.dtype)
        out[name] = np.concatenate([values, pad])
    return out


def _result(mesh: Mesh, coords: np.ndarray, conn: np.ndarray, point_data: Optional[dict] = None,
            cell_data: Optional[dict] = None) -> Mesh:
    data = _extend(mesh.point_data, len(coords) - len(mesh.points))
    data.update(point_data or {})
    return mesh.with_surface(coords, conn, data, cell_data)


def _lines(mesh: Mesh) -> np.ndarray:
    if "line" not in mesh.cells or not len(mesh.cells["line"]):
        raise FileError("the file has no line cells")
    return mesh.cells["line"]


def _loop(edges: np.ndarray) -> np.ndarray:
    """The closed loop of node IDs that a chain of line cells forms, first node repeated at the end."""
    following = {}
    for a, b in edges:
        following.setdefault(int(a), []).append(int(b))
    start = int(edges[0, 0])
    loop, node = [start], start
    for _ in range(len(edges)):
        nxt = following.get(node)
        if not nxt:
            break
        node = nxt.pop()
        loop.append(node)
        if node == start:
            break
    if loop[-1] != start or len(loop) != len(edges) + 1:
        raise FileError("the line cells do not form one closed loop running one way")
    return np.array(loop, dtype=np.uint32)


def cmd_info(args) -> Mesh:
    mesh = read(args.input)
    counts, unused, coincident = summary(mesh)
    lo, hi = mesh.points.min(axis=0), mesh.points.max(axis=0)
    print(f"{args.input}: {len(mesh.points)} nodes ({unused} unused, {coincident} coinciding with another)")
    for kind, n in counts.items():
        print(f"  {kind}: {n}")
    print(f"  bounding box: {lo.tolist()} .. {hi.tolist()}")
    for name in ("gmsh:physical", "gmsh:geometrical"):
        if name in mesh.cell_data:
            groups = sorted({int(v) for block in mesh.cell_data[name].values() for v in np.ravel(block)})
            print(f"  {name.split(':')[1]} tags: {groups}")
    try:
        conn = mesh.surface()
    except FileError:
        return None
    linear = conn[:, :4] if conn.shape[1] in (8, 9) else conn[:, :3] if conn.shape[1] == 6 else conn
    if linear.shape[1] == 4 and not np.any(linear[:, 3] != NULL):
        linear = linear[:, :3]
    non_manifold, neighbours = extras.neighbours_of(linear)
    flips = tk.mesh_reorient(linear, neighbours, 0, 1)[0]
    coherent = "coherent" if flips == 0 else f"{flips} elements disagree with their neighbours"
    print(f"  orientation: {coherent}; {non_manifold} non-manifold edges")
    smallest, largest = tk.angles(mesh.coords(), linear, False)
    print(f"  angles (degrees): smallest {np.degrees(np.abs(smallest)).min():.2f}, "
          f"largest {np.degrees(np.abs(largest)).max():.2f}")
    print(f"  area: {tk.area(mesh.coords(), linear):.6g}")
    return None


def cmd_raise_order(args) -> Mesh:
    if args.order != 2:
        raise UsageError("--order: mesh files hold quadratic cells only; use 2")
    mesh = read(args.input)
    coords, conn = tk.convert_into_quadratic(mesh.coords(), mesh.surface())
    return _result(mesh, coords, conn)


def cmd_linear(args) -> Mesh:
    mesh = read(args.input)
    return _result(mesh, mesh.coords(), tk.convert_into_linear(mesh.surface()))


def cmd_split(args) -> Mesh:
    mesh = read(args.input)
    coords, conn = mesh.coords(), mesh.surface()
    if args.to == "quads":
        coords, conn = tk.split_into_Q4(coords, conn)
        return _result(mesh, coords, conn)
    if args.max_angle is None and args.max_warp is None and args.min_jacobian is None:
        if conn.shape[1] != 4:
            raise UsageError("split --to triangles reads linear quadrangles or mixed meshes")
        return _result(mesh, coords, tk.split_Q4_into_T3(coords, conn)[1])
    angle = np.radians(args.max_angle) if args.max_angle is not None else 0.0
    warp = np.radians(args.max_warp) if args.max_warp is not None else 0.0
    jacobian = args.min_jacobian if args.min_jacobian is not None else -1.0
    _, _, conn = tk.split_Q4_into_T3(coords, angle, warp, jacobian, args.diagonal, np.empty(0, np.uint32), conn)
    return _result(mesh, coords, conn)


def cmd_reorient(args) -> Mesh:
    mesh = read(args.input)
    conn = mesh.surface()
    _, neighbours = extras.neighbours_of(conn)
    count, conn, _ = tk.mesh_reorient(conn, neighbours, args.seed, 1)
    if count < 0:
        raise FileError("the neighbour table does not match the cells")
    print(f"{count} elements flipped", file=sys.stderr)
    return _result(mesh, mesh.coords(), conn)


def cmd_measure(args) -> Mesh:
    mesh = read(args.input)
    coords, conn = mesh.coords(), mesh.surface()
    smallest, largest = tk.angles(coords, conn, False)
    quality = np.abs(tk.angles(coords, conn, True)[0])
    print(f"area {tk.area(coords, conn):.10g}")
    print(f"smallest angle {np.degrees(np.abs(smallest)).min():.4f} degrees, largest "
          f"{np.degrees(np.abs(largest)).max():.4f} degrees")
    counts, edges = np.histogram(quality, bins=10, range=(0, 1))
    for n, lo in zip(counts, edges):
        print(f"  quality {lo:.1f}-{lo + 0.1:.1f}: {n}")
    if args.plot:
        from .plot import plot_quality
        plot_quality(coords, conn, args.plot)
    if not args.output:
        return None
    data = {"smallest_angle": np.degrees(smallest), "largest_angle": np.degrees(largest), "quality": quality}
    return _result(mesh, coords, conn, cell_data=data)


def cmd_normals(args) -> Mesh:
    mesh = read(args.input)
    conn = mesh.surface()
    normals = tk.normals(mesh.points, conn, args.power, True)
    return _result(mesh, mesh.points, conn, point_data={"normal": normals})


def cmd_offset(args) -> Mesh:
    mesh = read(args.input)
    conn = mesh.surface()
    return _result(mesh, tk.offset(mesh.points, conn, args.distance), conn)


def cmd_curvature(args) -> Mesh:
    mesh = read(args.input)
    conn = mesh.surface()
    if conn.shape[1] != 3:
        raise UsageError("curvature reads triangle meshes; split quadrangles first")
    if args.tangents:
        if args.tangents not in mesh.point_data:
            raise UsageError(f"--tangents: no point data '{args.tangents}'")
        tangents = np.asarray(mesh.point_data[args.tangents], dtype=float)
        forms = tk.parametric_curvatures(np.ascontiguousarray(mesh.points[:, :2]), conn, tangents)
        return _result(mesh, mesh.points, conn, point_data={"second_form": forms})
    _, neighbours = extras.neighbours_of(conn)
    k = tk.principal_curvatures(mesh.points, conn, neighbours, args.radius, np.radians(args.max_angle),
                                args.max_elements)
    data = {"curvature_1": k[:, 6], "curvature_2": k[:, 7], "direction_1": k[:, 0:3], "direction_2": k[:, 3:6]}
    return _result(mesh, mesh.points, conn, point_data=data)


def cmd_interpolate(args) -> Mesh:
    background, target = read(args.background), read(args.input)
    if not background.planar or not target.planar:
        raise UsageError("interpolate works in the plane: both meshes must have z = 0")
    fields = [args.field] if args.field else [n for n, v in background.point_data.items()
                                               if np.asarray(v).dtype.kind == "f"]
    if not fields:
        raise UsageError("the background mesh has no floating-point point data to carry")
    bg_conn = background.surface()
    kind = tk.T3 if bg_conn.shape[1] == 3 else tk.MIXED
    if bg_conn.shape[1] not in (3, 4):
        raise UsageError("the background mesh must be linear")
    n_bg = len(background.points)
    coords = np.r_[background.coords(), target.coords()]
    _, neighbours = extras.neighbours_of(bg_conn)
    ancestors = extras.ancestors_of(bg_conn, len(coords))
    targets = np.arange(n_bg, len(coords), dtype=np.uint32)
    data = {}
    for name in fields:
        if name not in background.point_data:
            raise UsageError(f"--field: the background mesh has no point data '{name}'")
        values = np.asarray(background.point_data[name], dtype=float)
        field = np.concatenate([values, np.zeros((len(target.points),) + values.shape[1:])])
        data[name] = tk.interpolate(coords, bg_conn, neighbours, ancestors, field, targets, kind)[n_bg:]
    conn = target.surface()
    return _result(target, target.coords(), conn, point_data=data)


def cmd_metrics(args) -> Mesh:
    if args.mode == "generation":
        mesh = read(args.input)
        conn = mesh.surface()
        if conn.shape[1] != 3:
            raise UsageError("metrics generation reads triangle meshes")
        if args.normal_size is None:
            raise UsageError("metrics generation needs --normal-size")
        metrics = tk.metrics_gen_aniso3d(mesh.points, conn, args.normal_size)
        return _result(mesh, mesh.points, conn, point_data={"metric": metrics})
    if args.mode == "structured":
        mesh = read(args.input)
        loop = _loop(_lines(mesh))
        if args.field not in mesh.point_data:
            raise UsageError(f"--field: the loop has no point data '{args.field}'")
        values = np.asarray(mesh.point_data[args.field], dtype=float)
        coords, conn = tk.mesh_struct_Q4(mesh.coords(), loop, args.n_side)
        field = tk.metrics_struct(loop, args.n_side, values)
        return Mesh(mesh.points[:0]).with_surface(coords, conn, {args.field: field})
    # transfer: a size or metric field from a background mesh onto the input's nodes
    if not args.background:
        raise UsageError("metrics transfer needs --background")
    background, target = read(args.background), read(args.input)
    if args.field not in background.point_data:
        raise UsageError(f"--field: the background mesh has no point data '{args.field}'")
    bg_conn = background.surface()
    if bg_conn.shape[1] not in (3, 4):
        raise UsageError("the background mesh must be linear")
    values = np.asarray(background.point_data[args.field], dtype=float)
    n_bg = len(background.points)
    coords = np.r_[background.coords()[:, :2], target.coords()[:, :2]]
    _, neighbours = extras.neighbours_of(bg_conn)
    ancestors = extras.ancestors_of(bg_conn, len(coords))
    field = np.concatenate([values, np.zeros((len(target.points),) + values.shape[1:])])
    kind = tk.T3 if bg_conn.shape[1] == 3 else tk.MIXED
    carried = tk.interpolate_metrics(coords, bg_conn, neighbours, ancestors, field, False, kind)[n_bg:]
    return _result(target, target.coords(), target.surface(), point_data={args.field: carried})


def cmd_extrude(args) -> Mesh:
    mesh = read(args.input)
    coords = mesh.coords()
    edges = np.ascontiguousarray(_lines(mesh), dtype=np.uint32)
    suffix = "T3" if args.triangles else "Q4"
    if args.graded:
        h0, h1 = args.graded
        layers = (h0, h1, args.even)
    else:
        layers = (args.layers,)
    pattern = (0,) if args.triangles else ()

    def call(name, *head):
        function = getattr(tk, f"extrude_{name}_{suffix}")
        if args.graded:
            if args.triangles and name != "normal":
                return function(coords, edges, *head, layers[0], layers[1], 0, layers[2])
            return function(coords, edges, *head, *layers, *pattern)
        return function(coords, edges, *head, *layers, *pattern)

    dim = coords.shape[1]
    if args.mode == "translate":
        if args.direction is None or len(args.direction) != dim:
            raise UsageError(f"--direction needs {dim} numbers")
        out = call("translate", args.direction)
    elif args.mode == "rotate":
        if dim != 2 or args.center is None or len(args.center) != 2:
            raise UsageError("rotate works on planar lines and needs --center x,y")
        out = call("rotate", args.center, np.radians(args.angle))
    elif args.mode == "spiral":
        coords = mesh.points
        if None in (args.center, args.rotation, args.translation):
            raise UsageError("spiral needs --center, --rotation and --translation, 3 numbers each")
        out = call("spiral", args.center, args.rotation, args.translation)
    else:
        if args.thickness is None:
            raise UsageError("normal needs --thickness")
        out = call("normal", args.thickness)
    new_coords, conn = out
    blank = Mesh(mesh.points[:0])
    return blank.with_surface(new_coords, conn)


def cmd_struct(args) -> Mesh:
    mesh = read(args.input)
    loop = _loop(_lines(mesh))
    coords = mesh.coords()
    if args.triangles:
        coords, conn = tk.mesh_struct_T3(coords, loop, args.n_side, 0)
    else:
        coords, conn = tk.mesh_struct_Q4(coords, loop, args.n_side)
    return Mesh(mesh.points[:0]).with_surface(coords, conn)


def cmd_renumber(args) -> Mesh:
    mesh = read(args.input)
    conn = mesh.surface()
    coords, conn, _, _, nodes, elements = extras.renumber(mesh.points, conn)
    point_data = {name: np.asarray(v)[nodes] for name, v in mesh.point_data.items()}
    cell_data = {name: values[elements] for name, values in mesh.surface_cell_data().items()}
    # Vertex and line cells keep their order and follow their nodes.
    new_of = np.empty(len(nodes), dtype=np.uint32)
    new_of[nodes] = np.arange(len(nodes), dtype=np.uint32)
    others = {k: new_of[v] for k, v in mesh.cells.items() if k not in SURFACE_KINDS}
    other_data = {n: {k: v for k, v in d.items() if k in others} for n, d in mesh.cell_data.items()}
    rest = Mesh(mesh.points, others, {}, {n: d for n, d in other_data.items() if d})
    return rest.with_surface(coords, conn, point_data, cell_data)


def cmd_plot(args) -> None:
    from .plot import plot
    mesh = read(args.input)
    field = vectors = None
    if args.field:
        if args.field not in mesh.point_data:
            raise UsageError(f"--field: no point data '{args.field}'")
        field = np.asarray(mesh.point_data[args.field], dtype=float)
        if field.ndim == 2:
            field = np.linalg.norm(field, axis=1)
    if args.vectors:
        if args.vectors not in mesh.point_data:
            raise UsageError(f"--vectors: no point data '{args.vectors}'")
        vectors = np.asarray(mesh.point_data[args.vectors], dtype=float)
    width, height = args.size
    plot(mesh.coords(), mesh.surface(), field, vectors, args.output, size=(width / 100, height / 100), dpi=100,
         title=args.title)
    return None


def _parser() -> argparse.ArgumentParser:
    p = _Parser(prog="tesskit2d", description=__doc__.split("\n\n")[0],
                epilog="Files: .msh (Gmsh 2.2 and 4.1), .vtu, .vtk, .obj, .ply, .stl, .off and what else meshio reads.")
    p.add_argument("--version", action="version", version=f"tesskit2d {tk.__version__}")
    sub = p.add_subparsers(dest="command", required=True, parser_class=_Parser)

    def command(name, function, help_text, output=True, optional_output=False):
        s = sub.add_parser(name, help=help_text, description=help_text)
        s.add_argument("input", help="the mesh file to read")
        if output:
            s.add_argument("output", nargs="?" if optional_output else None, help="the mesh file to write")
        s.set_defaults(run=function)
        return s

    command("info", cmd_info, "counts, kinds, bounding box, tags, orientation and quality of a mesh", output=False)
    s = command("raise-order", cmd_raise_order, "quadratic elements: a shared mid node on every edge")
    s.add_argument("--order", type=int, default=2, help="the order to reach (2; files hold no higher order)")
    command("linear", cmd_linear, "linear elements: the mid nodes dropped from every element")
    s = command("split", cmd_split, "split elements into quadrangles or triangles")
    s.add_argument("--to", choices=("quads", "triangles"), required=True, help="the kind of the new elements")
    s.add_argument("--max-angle", type=float, help="split only quadrangles with a corner above this (degrees)")
    s.add_argument("--max-warp", type=float, help="... or warped beyond this (degrees, surfaces)")
    s.add_argument("--min-jacobian", type=float, help="... or with a scaled Jacobian below this (-1 to 1)")
    s.add_argument("--diagonal", type=int, choices=(0, 1), default=0,
                   help="0: the diagonal giving the better worst triangle; 1: the shorter diagonal")
    s = command("reorient", cmd_reorient, "orient every connected part like its first element")
    s.add_argument("--seed", type=int, default=0, help="the element whose orientation each part takes")
    s = command("measure", cmd_measure, "area, angles and a quality histogram", optional_output=True)
    s.add_argument("--plot", help="also draw the angle histograms into this PNG or SVG file")
    s = command("extrude", cmd_extrude, "sweep the line cells into a surface mesh")
    s.add_argument("--mode", choices=("translate", "rotate", "spiral", "normal"), required=True,
                   help="how the lines move")
    s.add_argument("--layers", type=int, default=1, help="uniform layers (count)")
    s.add_argument("--graded", type=float, nargs=2, metavar=("H0", "H1"),
                   help="graded layers: first and last layer thickness (length units; for rotate, radians)")
    s.add_argument("--even", action="store_true", help="with --graded: an even number of layers")
    s.add_argument("--triangles", action="store_true", help="triangles instead of quadrangles")
    s.add_argument("--direction", type=_vector, help="translate: the whole sweep's vector, x,y[,z]")
    s.add_argument("--center", type=_vector, help="rotate, spiral: the centre of rotation, x,y[,z]")
    s.add_argument("--angle", type=float, default=90.0, help="rotate: the sweep's angle (degrees)")
    s.add_argument("--rotation", type=_vector, help="spiral: the rotation vector, axis times angle (radians)")
    s.add_argument("--translation", type=_vector, help="spiral: the translation along the sweep, x,y,z")
    s.add_argument("--thickness", type=float, help="normal: the sweep's length along the line normals")
    s = command("struct", cmd_struct, "a structured grid inside the closed loop of line cells")
    s.add_argument("--n-side", type=int, required=True, help="cells along the loop's second side")
    s.add_argument("--triangles", action="store_true", help="triangles instead of quadrangles")
    s = command("normals", cmd_normals, "unit node normals of a surface, as point data 'normal'")
    s.add_argument("--power", type=float, default=1.0,
                   help="elements weigh by their size to this power (0: all alike, 1: by size)")
    s = command("offset", cmd_offset, "move every node along its normal")
    s.add_argument("--distance", type=float, required=True, help="the distance (length units)")
    s = command("curvature", cmd_curvature, "principal curvatures and directions of a triangle surface, "
                                             "or the parametric second form with --tangents")
    s.add_argument("--radius", type=float, default=1.0, help="the patch radius (length units)")
    s.add_argument("--max-angle", type=float, default=60.0, help="patch normals within this of the node's (degrees)")
    s.add_argument("--max-elements", type=int, default=40, help="elements per patch at most")
    s.add_argument("--tangents", help="parametric: point data of 6 values, dS/du and dS/dv, at nodes whose "
                                      "coordinates are (u, v); writes the second form as 'second_form'")
    s = command("interpolate", cmd_interpolate, "carry point data from a background mesh onto the input mesh")
    s.add_argument("--background", required=True, help="the mesh file whose point data is carried")
    s.add_argument("--field", help="the point data to carry (default: every floating-point one)")
    s = command("metrics", cmd_metrics, "metric and size fields: generated, transferred or structured")
    s.add_argument("--mode", choices=("generation", "transfer", "structured"), required=True,
                   help="generation: anisotropic metrics from the curvature of a triangle surface; transfer: a "
                        "size or metric field from --background onto the input's nodes; structured: a size field "
                        "on the loop of line cells carried into the structured grid it bounds")
    s.add_argument("--normal-size", type=float, help="generation: the size across the surface (length units)")
    s.add_argument("--background", help="transfer: the mesh file that holds the field")
    s.add_argument("--field", default="size",
                   help="transfer, structured: the point data: sizes (length units) or metrics (3 or 6 values)")
    s.add_argument("--n-side", type=int, default=4, help="structured: cells along the loop's second side")
    command("renumber", cmd_renumber, "nodes along a Hilbert curve, elements by their smallest node: locality "
                                      "for the calls that follow")
    s = command("plot", cmd_plot, "draw the mesh (PNG or SVG by the output's extension)")
    s.add_argument("--field", help="point data to colour the mesh by (vectors by their length)")
    s.add_argument("--vectors", help="point data to draw as arrows")
    s.add_argument("--size", type=int, nargs=2, default=(800, 600), metavar=("W", "H"), help="pixels")
    s.add_argument("--title", help="a title over the picture")
    for name in PARALLEL:
        sub.choices[name].add_argument(
            "--parts", action="store_true",
            help="under mpirun: each rank reads its own part file and writes its own result; the file names hold "
                 "{rank}, and a part file has point data 'global_id' (and may have cell data 'global_element')")
    return p


#: Subcommands that run on several MPI ranks when started by mpirun (metrics with --mode generation).
PARALLEL = ("raise-order", "measure", "normals", "curvature", "interpolate", "reorient", "metrics")


def _under_mpi() -> bool:
    import os
    return int(os.environ.get("OMPI_COMM_WORLD_SIZE", os.environ.get("PMI_SIZE", "1"))) > 1


def _rank() -> int:
    from mpi4py import MPI
    return MPI.COMM_WORLD.rank


def _check_options(args) -> None:
    """The option errors the serial command gives, found before any file is read."""
    if args.command == "raise-order" and args.order != 2:
        raise UsageError("--order: mesh files hold quadratic cells only; use 2")
    if args.command == "metrics" and args.mode != "generation":
        raise UsageError("metrics runs on several ranks with --mode generation only")
    if args.command == "metrics" and args.normal_size is None:
        raise UsageError("metrics generation needs --normal-size")
    if args.parts:
        for name in ("input", "output", "background"):
            value = getattr(args, name, None)
            if value and "{rank}" not in value:
                raise UsageError(f"--parts: the {name} file name needs {{rank}}, e.g. part_{{rank}}.vtu")


def _read_part(path: str, rank: int):
    """A rank's own part file: the mesh, and its nodes' and elements' global IDs."""
    mesh = read(path.format(rank=rank))
    if "global_id" not in mesh.point_data:
        raise FileError(f"{path.format(rank=rank)}: a part file needs point data 'global_id'")
    gid = np.asarray(mesh.point_data["global_id"]).astype(np.uint64).ravel()
    elements = mesh.surface_cell_data().get("global_element")
    return mesh, gid, None if elements is None else np.asarray(elements, dtype=np.int64).ravel()


def _run_parallel(args) -> Optional[Mesh]:
    """Every rank works on its part of the mesh; see tesskit2d.parallel.

    Rank 0 reads and partitions the file and writes the whole result, which
    equals the serial command's up to the numbering of new nodes; with
    ``--parts`` each rank reads its own part file and writes its own result,
    with the point data 'global_id'.
    """
    from mpi4py import MPI

    from . import parallel
    comm = MPI.COMM_WORLD
    rank, parts = comm.rank, args.parts
    command = args.command
    planar = command in ("raise-order", "measure", "interpolate", "reorient")

    def load():
        _check_options(args)
        if parts:
            return _read_part(args.input, rank)
        return (read(args.input), None, None) if rank == 0 else (None, None, None)
    mesh, gid, elements = parallel.each(comm, load)

    def coords_of(m):
        # Files of parts may differ in whether z is 0 throughout; then every part keeps x, y, z.
        return m.points[:, :2] if command == "interpolate" else m.coords() if planar and not parts else m.points
    if parts:
        dm = parallel.each(comm, lambda: parallel.DistributedMesh(
            comm, np.ascontiguousarray(coords_of(mesh)), mesh.surface(), gid, elements))
    else:
        surface = parallel.each(comm, lambda: mesh.surface() if rank == 0 else None)
        dm = parallel.distribute(coords_of(mesh) if rank == 0 else None, surface, comm)

    def point_data(name, required=True):
        """A point data array of the input, on every rank's local nodes."""
        def get():
            if rank and not parts:
                return None
            if name not in mesh.point_data:
                raise UsageError(f"no point data '{name}'")
            return np.asarray(mesh.point_data[name], dtype=float)
        values = parallel.each(comm, get)
        return values if parts else parallel.share(dm, values)

    def finish(result: parallel.DistributedMesh, data=None, cell_data=None):
        """The output mesh: this rank's part, or the gathered whole on rank 0."""
        if parts:
            data = dict(data or {}, global_id=result.gid.astype(np.int64))
            kept = {k: v for k, v in mesh.point_data.items() if k != "global_id"}
            return _result(Mesh(mesh.points, mesh.cells, kept, mesh.cell_data), result.coords, result.conn, data,
                           cell_data)
        names = sorted(data or {})
        whole = parallel.gather(result, np.column_stack([np.reshape(data[k], (len(result.gid), -1)) for k in names])
                                if names else None)
        cells = _gather_cells(comm, result, cell_data)
        if rank:
            return None
        coords, conn, values = whole
        n_old = len(mesh.points)
        coords[:n_old] = mesh.coords() if coords.shape[1] < 3 else mesh.points  # unused nodes stay
        out, at = {}, 0
        for k in names:
            width = np.reshape(data[k], (len(result.gid), -1)).shape[1]
            out[k] = values[:, at: at + width].reshape((len(values),) + np.shape(data[k])[1:])
            at += width
        return _result(mesh, coords, conn, out, cells)

    if command == "raise-order":
        return finish(parallel.raise_order(dm))
    if command == "measure":
        return _measure_parallel(args, dm, finish)
    if command == "normals":
        return finish(dm, {"normal": parallel.normals(dm, args.power)})
    if command == "curvature":
        parallel.each(comm, lambda: _refuse_unless(dm.conn.shape[1] == 3, "curvature reads triangle meshes; "
                                                                           "split quadrangles first"))
        if args.tangents:
            uv = parallel.DistributedMesh(comm, np.ascontiguousarray(dm.coords[:, :2]), dm.conn, dm.gid, dm.elements,
                                          dm.n_nodes)
            forms = parallel.parametric_curvatures(uv, point_data(args.tangents))
            return finish(dm, {"second_form": forms})
        k = parallel.principal_curvatures(dm, args.radius, np.radians(args.max_angle), args.max_elements)
        return finish(dm, {"curvature_1": k[:, 6], "curvature_2": k[:, 7], "direction_1": k[:, 0:3],
                           "direction_2": k[:, 3:6]})
    if command == "metrics":
        parallel.each(comm, lambda: _refuse_unless(dm.conn.shape[1] == 3, "metrics generation reads triangle meshes"))
        return finish(dm, {"metric": parallel.metrics_gen_aniso3d(dm, args.normal_size)})
    if command == "reorient":
        count, conn = parallel.reorient(dm, args.seed, True)
        if count < 0:
            raise FileError("the neighbour table does not match the cells")
        if rank == 0:
            print(f"{count} elements flipped", file=sys.stderr)
        return finish(parallel.DistributedMesh(comm, dm.coords, conn, dm.gid, dm.elements, dm.n_nodes))
    planar_input = parallel.each(comm, lambda: mesh is None or mesh.planar)
    return _interpolate_parallel(args, dm, comm, parts, finish, planar_input)


def _refuse_unless(condition: bool, message: str) -> None:
    if not condition:
        raise UsageError(message)


def _gather_cells(comm, dm, cell_data: Optional[dict]) -> Optional[dict]:
    """Per-element data of every rank on rank 0, in the whole mesh's element order."""
    if not cell_data:
        return None
    got = comm.gather((dm.elements, cell_data), root=0)
    if comm.rank:
        return None
    order = np.argsort(np.concatenate([g[0] for g in got]), kind="stable")
    return {name: np.concatenate([g[1][name] for g in got])[order] for name in cell_data}


def _measure_parallel(args, dm, finish) -> Optional[Mesh]:
    from mpi4py import MPI

    from . import parallel
    comm = dm.comm

    def local():
        smallest, largest = tk.angles(dm.coords, dm.conn, False)
        return smallest, largest, np.abs(tk.angles(dm.coords, dm.conn, True)[0])
    smallest, largest, quality = parallel.each(comm, local)
    total = parallel.area(dm)
    low = comm.allreduce(float(np.degrees(np.abs(smallest)).min()), op=MPI.MIN)
    high = comm.allreduce(float(np.degrees(np.abs(largest)).max()), op=MPI.MAX)
    counts = comm.allreduce(np.histogram(quality, bins=10, range=(0, 1))[0], op=MPI.SUM)
    if comm.rank == 0:
        print(f"area {total:.10g}")
        print(f"smallest angle {low:.4f} degrees, largest {high:.4f} degrees")
        for n, lo in zip(counts, np.linspace(0, 1, 11)):
            print(f"  quality {lo:.1f}-{lo + 0.1:.1f}: {n}")
    if args.plot:
        whole = parallel.gather(dm)

        def draw():
            if comm.rank == 0:
                from .plot import plot_quality
                coords, conn, _ = whole
                plot_quality(np.nan_to_num(coords), conn, args.plot)  # rows of unused nodes are NaN
        parallel.each(comm, draw)
    if not args.output:
        return None
    data = {"smallest_angle": np.degrees(smallest), "largest_angle": np.degrees(largest), "quality": quality}
    return finish(dm, cell_data=data)


def _interpolate_parallel(args, dm, comm, parts, finish, planar_input: bool) -> Optional[Mesh]:
    """The background is distributed like any input; the targets go to the ranks in blocks of nearby nodes."""
    from . import parallel
    rank = comm.rank

    def load():
        if parts:
            return _read_part(args.background, rank)
        return (read(args.background), None, None) if rank == 0 else (None, None, None)
    background, bg_gid, bg_elements = parallel.each(comm, load)

    def fields():
        if rank and not parts:
            return None
        names = [args.field] if args.field else [n for n, v in background.point_data.items()
                                                 if np.asarray(v).dtype.kind == "f"]
        if not names:
            raise UsageError("the background mesh has no floating-point point data to carry")
        for name in names:
            if name not in background.point_data:
                raise UsageError(f"--field: the background mesh has no point data '{name}'")
        if not background.planar or not planar_input:
            raise UsageError("interpolate works in the plane: both meshes must have z = 0")
        if background.surface().shape[1] not in (3, 4):
            raise UsageError("the background mesh must be linear")
        return names
    names = parallel.each(comm, fields)
    names = names if parts else comm.bcast(names)
    if parts:
        bg = parallel.DistributedMesh(comm, np.ascontiguousarray(background.points[:, :2]), background.surface(),
                                      bg_gid, bg_elements)
    else:
        bg = parallel.distribute(None if rank else background.points[:, :2], None if rank else background.surface(),
                                 comm)
    targets = dm.coords  # the input's nodes, as distributed
    data = {}
    for name in names:
        values = parallel.each(comm, lambda: None if rank and not parts else
                                np.asarray(background.point_data[name], dtype=float))
        local = values if parts else parallel.share(bg, values)
        initial = np.zeros((len(targets),) + local.shape[1:])
        data[name] = parallel.interpolate(bg, local, targets, initial)
    return finish(dm, data)


def main(argv: Optional[List[str]] = None) -> int:
    args = _parser().parse_args(argv)
    try:
        if args.command in PARALLEL and (_under_mpi() or getattr(args, "parts", False)):
            from .parallel import ParallelError
            try:
                result = _run_parallel(args)
            except ParallelError as error:
                raise FileError(str(error)) from None
        else:
            result = args.run(args)
        if result is not None and getattr(args, "output", None):
            write(args.output.format(rank=_rank()) if getattr(args, "parts", False) else args.output, result)
    except (FileError, UsageError, tk.ArgumentError, MemoryError, OSError) as error:
        message = str(error).splitlines()[0] if str(error) else type(error).__name__
        sys.stderr.write(f"tesskit2d {args.command}: {message}\n")
        return 2
    return 0
