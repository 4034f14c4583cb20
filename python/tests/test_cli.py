"""The command line on files it writes first, run as a user runs it."""
import os
import subprocess
import sys

import meshio
import numpy as np
import pytest

from meshes import grid

try:
    import gmsh
except ImportError:
    gmsh = None


def run(*args, ok=True):
    done = subprocess.run([sys.executable, "-m", "tesskit2d", *map(str, args)], capture_output=True, text=True,
                          env={**os.environ}, timeout=60)
    assert (done.returncode == 0) == ok, done.stderr
    return done


def mid_nodes_on_their_edges(path):
    """Every quadratic cell's mid nodes at the midpoints of their edges, in the file's own (VTK) order."""
    m = meshio.read(path)
    edges = {"triangle6": [(0, 1), (1, 2), (2, 0)], "quad9": [(0, 1), (1, 2), (2, 3), (3, 0)]}
    checked = 0
    for block in m.cells:
        for k, (a, b) in enumerate(edges.get(block.type, [])):
            c = block.data
            n = len(edges[block.type])
            assert np.allclose(m.points[c[:, n + k]], (m.points[c[:, a]] + m.points[c[:, b]]) / 2)
        checked += len(block.data) if block.type in edges else 0
    return checked


def plate(path, recombine, version, binary):
    """The smallest file meshio refuses: a plate with a hole (OpenCASCADE), one physical surface, SaveAll."""
    gmsh.initialize([], False)
    gmsh.option.setNumber("General.Terminal", 0)
    r = gmsh.model.occ.addRectangle(0, 0, 0, 2, 1)
    gmsh.model.occ.cut([(2, r)], [(2, gmsh.model.occ.addDisk(1, 0.5, 0, 0.2, 0.2))])
    gmsh.model.occ.synchronize()
    gmsh.model.addPhysicalGroup(2, [1], 7)
    gmsh.option.setNumber("Mesh.MeshSizeMax", 0.25)
    gmsh.option.setNumber("Mesh.RecombineAll", int(recombine))
    gmsh.model.mesh.generate(2)
    n_surface = sum(len(t) for t in gmsh.model.mesh.getElements(2, 1)[1])
    for name, value in (("Mesh.SaveAll", 1), ("Mesh.MshFileVersion", version), ("Mesh.Binary", int(binary))):
        gmsh.option.setNumber(name, value)
    gmsh.write(str(path))
    gmsh.finalize()
    return n_surface


@pytest.mark.skipif(gmsh is None, reason="needs python3-gmsh")
# Format 4.0 (ASCII only) goes through Gmsh's own reader.
@pytest.mark.parametrize("recombine,version,binary", [(0, 4.1, 1), (1, 4.1, 0), (0, 2.2, 0), (1, 2.2, 1), (1, 4.0, 0)])
def test_gmsh_files_with_save_all_are_read_raised_and_keep_their_tags(tmp_path, recombine, version, binary):
    msh, vtu = tmp_path / "plate.msh", tmp_path / "plate.vtu"
    n_surface = plate(msh, recombine, version, binary)
    report = run("info", msh).stdout
    assert f"{'quad' if recombine else 'triangle'}: {n_surface}" in report
    run("raise-order", "--order", 2, msh, vtu)
    assert mid_nodes_on_their_edges(vtu) == n_surface
    m = meshio.read(vtu)
    kind = "quad9" if recombine else "triangle6"
    tags = np.concatenate([d for c, d in zip(m.cells, m.cell_data["gmsh:physical"]) if c.type == kind])
    # Format 2.2 with SaveAll writes every element outside the groups.
    assert set(tags.tolist()) == ({0} if version == 2.2 else {7})


@pytest.mark.parametrize("file_format,suffix,mixed", [("gmsh22", ".msh", True), ("gmsh", ".msh", False),
                                                      ("vtu", ".vtu", True)])
def test_files_written_by_meshio_round_trip_through_raise_order(tmp_path, file_format, suffix, mixed):
    # meshio writes format 4.1 of one cell kind only, without entity data.
    xy, quads = grid(3)
    points = np.c_[xy, np.zeros(len(xy))]
    triangles = np.r_[quads[:, [0, 1, 2]], quads[:, [2, 3, 0]]]
    cells = [("triangle", triangles[:6]), ("quad", quads[3:])] if mixed else [("triangle", triangles)]
    data = {"gmsh:physical": [np.full(len(c), 3) for _, c in cells],
            "gmsh:geometrical": [np.full(len(c), 1) for _, c in cells]}
    source = tmp_path / f"in{suffix}"
    meshio.write(source, meshio.Mesh(points, cells, cell_data=data), file_format=file_format)
    out = tmp_path / "out.vtu"
    run("raise-order", source, out)
    assert mid_nodes_on_their_edges(out) == sum(len(c) for _, c in cells)


def test_struct_interpolate_and_plot(tmp_path):
    # A circle of 16 line cells, filled with a 4 x 4 grid.
    t = np.linspace(0, 2 * np.pi, 17)[:-1]
    loop = np.c_[np.cos(t), np.sin(t), np.zeros(16)]
    lines = np.c_[np.arange(16), (np.arange(16) + 1) % 16]
    meshio.write(tmp_path / "loop.vtu", meshio.Mesh(loop, [("line", lines)]))
    run("struct", "--n-side", 4, tmp_path / "loop.vtu", tmp_path / "disc.vtu")
    disc = meshio.read(tmp_path / "disc.vtu")
    assert [(c.type, len(c.data)) for c in disc.cells] == [("quad", 16)]
    assert np.all(np.hypot(disc.points[:, 0], disc.points[:, 1]) <= 1 + 1e-12)
    # A linear field on the disc comes back exact on a grid inside it.
    field = 2 * disc.points[:, 0] - disc.points[:, 1] + 1
    meshio.write(tmp_path / "bg.vtu", meshio.Mesh(disc.points, disc.cells, point_data={"f": field}))
    xy, quads = grid(4)
    inner = np.c_[xy * 0.8 - 0.4, np.zeros(len(xy))]
    meshio.write(tmp_path / "target.vtu", meshio.Mesh(inner, [("quad", quads)]))
    run("interpolate", "--background", tmp_path / "bg.vtu", tmp_path / "target.vtu", tmp_path / "carried.vtu")
    carried = meshio.read(tmp_path / "carried.vtu")
    assert np.allclose(carried.point_data["f"], 2 * inner[:, 0] - inner[:, 1] + 1, atol=1e-12)
    run("plot", "--field", "f", "--size", 320, 240, tmp_path / "carried.vtu", tmp_path / "f.png")
    import matplotlib.image
    picture = matplotlib.image.imread(tmp_path / "f.png")
    assert picture.shape[:2] == (240, 320) and picture[..., :3].std() > 0.05


def test_bad_input_ends_with_one_line_and_status_2(tmp_path):
    tetra = tmp_path / "tetra.vtu"
    meshio.write(tetra, meshio.Mesh(np.eye(4, 3), [("tetra", np.array([[0, 1, 2, 3]]))]))
    (tmp_path / "junk.vtu").write_text("not a mesh")
    xy, quads = grid(1)
    meshio.write(tmp_path / "q.vtu", meshio.Mesh(np.c_[xy, np.zeros(4)], [("quad", quads)]))
    cases = [(["info", tmp_path / "missing.msh"], "no such file"), (["info", tetra], "'tetra'"),
             (["info", tmp_path / "junk.vtu"], "junk.vtu"), (["raise-order", "--order", 3, tmp_path / "q.vtu", "o.vtu"], "--order"),
             (["split", "--to", "hexes", tmp_path / "q.vtu", "o.vtu"], "invalid choice"), (["nonsense"], "invalid choice")]
    for args, words in cases:
        done = run(*args, ok=False)
        assert done.returncode == 2 and words in done.stderr and len(done.stderr.strip().splitlines()) == 1, done.stderr


def test_every_subcommand_runs_on_a_small_mesh(tmp_path):
    from tesskit2d.cli import main
    t = np.linspace(0, 2 * np.pi, 13)[:-1]
    loop = tmp_path / "loop.vtu"
    meshio.write(loop, meshio.Mesh(np.c_[np.cos(t), np.sin(t), np.zeros(12)],
                                   [("line", np.c_[np.arange(12), (np.arange(12) + 1) % 12])],
                                   point_data={"size": 0.1 + 0.05 * np.cos(t)}))
    disc, wavy = tmp_path / "disc.vtu", tmp_path / "wavy.vtu"
    assert main(["metrics", "--mode", "structured", "--n-side", "3", str(loop), str(disc)]) == 0
    xy, quads = grid(6)
    triangles = np.r_[quads[:, [0, 1, 2]], quads[:, [2, 3, 0]]]
    meshio.write(wavy, meshio.Mesh(np.c_[xy, 0.2 * np.sin(3 * xy[:, 0])], [("triangle", triangles)]))
    runs = [["extrude", "--mode", "rotate", "--center", "0,0", "--layers", "3", loop],
            ["extrude", "--mode", "translate", "--direction", "0,1", "--graded", "0.1", "0.3", "--triangles", loop],
            ["metrics", "--mode", "transfer", "--background", disc, disc], ["normals", wavy], ["offset", "--distance", "0.1", wavy],
            ["curvature", "--radius", "0.3", wavy], ["metrics", "--mode", "generation", "--normal-size", "0.05", wavy],
            ["split", "--to", "quads", wavy], ["reorient", disc], ["measure", disc], ["renumber", disc]]
    for k, args in enumerate(runs):
        assert main([*map(str, args), str(tmp_path / f"out{k}.vtu")]) == 0, args
