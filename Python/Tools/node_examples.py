# SPDX-License-Identifier: Apache-2.0
"""The examples in the texts of the functions, one or more for each. They are run as tests."""

BEGIN = """\
>>> import numpy as np
>>> import valuenodes as vn
"""
HEIGHTS = BEGIN + ">>> heights = np.array([[0, 1], [2, 4]], np.float32)\n"

EXAMPLES = {
    "to_value": HEIGHTS + """\
>>> np.asarray(vn.to_value(vn.Image(heights, range=(0, 4)), low=0, high=100))
array([[  0.,  25.],
       [ 50., 100.]], dtype=float32)
""",
    "add": HEIGHTS + """\
>>> np.asarray(vn.add(heights, 0.5))
array([[0.5, 1.5],
       [2.5, 4.5]], dtype=float32)
>>> vn.add(heights, heights, heights).range
(0.0, 12.0)
""",
    "subtract": HEIGHTS + """\
>>> np.asarray(vn.subtract(heights, 1))
array([[-1.,  0.],
       [ 1.,  3.]], dtype=float32)
""",
    "multiply": HEIGHTS + """\
>>> mask = np.array([[1, 0], [0.5, 1]], np.float32)
>>> np.asarray(vn.multiply(heights, mask))
array([[0., 0.],
       [1., 4.]], dtype=float32)
""",
    "divide": HEIGHTS + """\
>>> np.asarray(vn.divide(heights, 4))
array([[0.  , 0.25],
       [0.5 , 1.  ]], dtype=float32)
""",
    "power": HEIGHTS + """\
>>> np.asarray(vn.power(heights, np.full((2, 2), 2.0)))
array([[ 0.,  1.],
       [ 4., 16.]], dtype=float32)
""",
    "minimum": HEIGHTS + """\
>>> np.asarray(vn.minimum(heights, 1.5))
array([[0. , 1. ],
       [1.5, 1.5]], dtype=float32)
""",
    "maximum": HEIGHTS + """\
>>> np.asarray(vn.maximum(heights, 1.5))
array([[1.5, 1.5],
       [2. , 4. ]], dtype=float32)
""",
    "clamp": HEIGHTS + """\
>>> np.asarray(vn.clamp(heights, low=1, high=3))
array([[1., 1.],
       [2., 3.]], dtype=float32)
""",
    "steps": HEIGHTS + """\
>>> np.asarray(vn.steps(vn.Image(heights, range=(0, 5)), steps=2))
array([[0., 0.],
       [0., 5.]], dtype=float32)
""",
    "function": HEIGHTS + """\
>>> np.asarray(vn.function(heights, function="square_root"))
array([[0.       , 1.       ],
       [1.4142135, 2.       ]], dtype=float32)
""",
    "condition": HEIGHTS + """\
>>> np.asarray(vn.condition(heights, condition="a_lte_v_lt_b", a=1, b=4))
array([[0., 1.],
       [1., 0.]], dtype=float32)
""",
    "compare": HEIGHTS + """\
>>> masks = vn.compare(heights, np.array([[0, 1], [3, 3]], np.float32))
>>> np.asarray(masks.image_a_l_b)
array([[0., 0.],
       [1., 0.]], dtype=float32)
>>> np.asarray(masks.image_a_eq_b)
array([[1., 1.],
       [0., 0.]], dtype=float32)
""",
    "value_range": HEIGHTS + """\
>>> np.asarray(vn.value_range(heights, center=2, size=1, falloff=2))
array([[0.5, 1. ],
       [1. , 0.5]], dtype=float32)
""",
    "relief": BEGIN + """\
>>> mask = np.array([[0, 0, 0, 1, 0, 0]], np.float32)
>>> np.asarray(vn.relief(mask, radius=2, seamless=False))
array([[0. , 0. , 0.5, 1. , 0.5, 0. ]], dtype=float32)
""",
    "distance": BEGIN + """\
>>> shape = np.array([[1, 0, 0, 0, 0]], np.float32)
>>> np.asarray(vn.distance(shape, seamless=False))
array([[0., 1., 2., 3., 4.]], dtype=float32)
>>> np.asarray(vn.distance(shape))
array([[0., 1., 2., 2., 1.]], dtype=float32)
""",
    "gradient": HEIGHTS + """\
>>> slope = vn.gradient(heights, seamless=False)
>>> np.asarray(slope.output_x)
array([[1., 1.],
       [2., 2.]], dtype=float32)
>>> np.asarray(slope.output_y)
array([[2., 3.],
       [2., 3.]], dtype=float32)
""",
    "ambient_occlusion": BEGIN + """\
>>> flat = np.zeros((2, 3), np.float32)
>>> np.asarray(vn.ambient_occlusion(flat))
array([[1., 1., 1.],
       [1., 1., 1.]], dtype=float32)
""",
    "connected_components": BEGIN + """\
>>> mask = np.array([[1, 1, 0], [0, 0, 0], [0, 0, 1]], np.float32)
>>> np.asarray(vn.connected_components(mask, neighbors="cross", seamless=False))
array([[0., 0., 1.],
       [1., 1., 1.],
       [1., 1., 2.]], dtype=float32)
""",
    "component_edges": BEGIN + """\
>>> heights = np.array([[0, 0, 0, 1, 1, 1]], np.float32)
>>> np.asarray(vn.component_edges(heights, seamless=False))
array([[1., 1., 0., 0., 1., 1.]], dtype=float32)
""",
    "read": """\
>>> import os, tempfile
>>> import numpy as np
>>> import valuenodes as vn
>>> with tempfile.TemporaryDirectory() as folder:
...     vn.write(os.path.join(folder, "half.png"), np.full((2, 3), 0.5))
...     vn.read(os.path.join(folder, "half.png")).size
(3, 2)
""",
}
