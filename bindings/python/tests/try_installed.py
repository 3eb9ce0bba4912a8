"""A short session of the module where it is installed, as a wheel (`site-packages`) or as a Debian
package (`dist-packages`), and where there are no other packages: it stands alone, and says what it
takes when it is asked for arrays."""

import pathlib
import sys
import tempfile

import tarnkit

assert sys.argv[1] in tarnkit.__file__, tarnkit.__file__
assert tarnkit.__version__.count(".") == 2
document = tarnkit.Document()
touch, toggle = document.add("Touch Interaction"), document.add("Switch", position=(200, 40))
touch.outputs["Down"] >> toggle.inputs["Toggle"]
with tempfile.TemporaryDirectory() as folder:
    path = pathlib.Path(folder) / "touch.document"
    document.save(path)
    assert [node.name for node in tarnkit.open(path).nodes] == ["Touch Interaction", "Switch"]
assert document.to_svg().startswith("<") and document.address_of(toggle) == "Switch"
assert tarnkit.Expression("sqrt(x**2 + y**2)").evaluate(x=3, y=4) == 5
try:
    document.nodes.positions
except ImportError as missing:
    assert "numpy" in str(missing)
else:
    raise AssertionError("the environment has NumPy")
print("the installed module works")
