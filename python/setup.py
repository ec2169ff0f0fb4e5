"""Installs hxsim (`pip install ./python`): pure Python over numpy, pandas and matplotlib (hxsweep: PyYAML, Jinja2)."""
import re
from pathlib import Path

from setuptools import setup

HERE = Path(__file__).resolve().parent
VERSION = re.search(r'^__version__ = "([^"]+)"', (HERE / "hxsim" / "__init__.py").read_text(), re.M).group(1)

setup(
    name="hxsim",
    version=VERSION,
    description="Read recordings of robot-manipulator simulations into pandas and draw display descriptions",
    long_description=(HERE / "README.md").read_text(),
    long_description_content_type="text/markdown",
    license="Apache-2.0",
    packages=["hxsim", "hxsim.sweep"],
    python_requires=">=3.9",
    install_requires=["numpy", "pandas", "matplotlib", "PyYAML", "Jinja2"],
    # Reading HDF5 recordings (.h5): `pip install ./python[hdf5]`; hxsweep --dask: `./python[dask]`.
    extras_require={"hdf5": ["h5py"], "dask": ["distributed"]},
    entry_points={"console_scripts": ["hxplot = hxsim.hxplot:main", "hxsweep = hxsim.hxsweep:main"]},
)
