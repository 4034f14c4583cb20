"""Gmsh's files as the package reads them: what a real file holds beyond a synthetic one."""
import numpy as np

import tesskit2d as tk

# Two surfaces, only the first in physical group 7; node tags with gaps, node
# 30 used by no cell, node 40 where node 12 is; a vertex and a line cell on the
# geometry's point and curve; a field on two nodes.
GMSH41 = """$MeshFormat\n4.1 0 8\n$EndMeshFormat\n$Entities\n1 1 2 0\n3 0 0 0 0\n5 0 0 0 2 0 0 0 1 3
1 0 0 0 2 1 0 1 7 0\n2 0 0 0 2 1 0 0 0\n$EndEntities\n$Nodes\n3 6 2 40\n0 3 0 1\n2\n0 0 0\n2 1 0 3\n10\n11\n12
1 0 0\n1 1 0\n0 1 0\n2 2 0 2\n40\n30\n1 1 0\n9 9 0\n$EndNodes\n$Elements\n4 5 1 9\n0 3 15 1\n1 2\n1 5 1 1\n2 2 10
2 1 2 2\n3 2 10 11\n4 2 11 12\n2 2 2 1\n9 10 40 12\n$EndElements
$NodeData\n1\n"f"\n1\n0\n3\n0\n1\n2\n10 1.5\n40 2.5\n$EndNodeData\n"""
# Format 2.2 gives every element its own count of tags: none, three, two.
GMSH22 = """$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n4\n1 0 0 0\n3 1 0 0\n4 1 1 0\n8 0 1 0\n$EndNodes
$Elements\n3\n1 15 0 1\n2 2 3 5 6 0 1 3 4\n7 3 2 0 9 1 3 4 8\n$EndElements\n"""


def test_tags_gaps_unused_and_coincident_nodes_and_data_survive_a_round_trip(tmp_path):
    nan = np.nan
    cases = [(GMSH41, {"vertex": [[0]], "line": [[0, 1]], "triangle": [[0, 1, 2], [0, 2, 3], [1, 5, 3]]},
              [7, 7, 0], [1, 1, 2], (1, 1), [2, 10, 11, 12, 30, 40], [nan, 1.5, nan, nan, nan, 2.5]),
             (GMSH22, {"vertex": [[0]], "triangle": [[0, 1, 2]], "quad": [[0, 1, 2, 3]]}, [5], [6], (0, 0),
              [1, 3, 4, 8], None)]
    for text, cells, physical, entity, odd_nodes, node_tags, field in cases:
        path = tmp_path / "in.msh"
        path.write_text(text)
        seen = []
        mesh = tk.read(str(path), seen.append)
        assert seen == sorted(seen) and seen[-1] == 1.0
        # What the package writes, binary 2.2, comes back the same with its data.
        mesh.cell_data["q"] = {k: np.arange(len(v)) + 0.5 for k, v in mesh.cells.items()}
        tk.write(str(tmp_path / "out.msh"), mesh, binary=True)
        for m in (mesh, tk.read(str(tmp_path / "out.msh"))):
            assert {k: v.tolist() for k, v in m.cells.items()} == cells
            assert m.cell_data["gmsh:physical"]["triangle"].tolist() == physical
            assert m.cell_data["gmsh:geometrical"]["triangle"].tolist() == entity
            assert tk.files.summary(m)[1:] == odd_nodes
            assert m.point_data["gmsh:node_tag"].tolist() == node_tags
            assert field is None or np.array_equal(m.point_data["f"], field, equal_nan=True)
            assert all(np.array_equal(m.cell_data["q"][k], np.arange(len(v)) + 0.5) for k, v in m.cells.items())
