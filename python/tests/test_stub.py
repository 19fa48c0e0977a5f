"""The type stub written by the build names exactly what the package generates."""

import ast
import inspect
import os

import vektuner
from vektuner import _helpers


def stub():
    path = os.path.join(os.path.dirname(vektuner.__file__), "__init__.pyi")
    with open(path, encoding="utf-8") as f:
        return ast.parse(f.read())


def members(node):
    return {item.name for item in node.body if isinstance(item, ast.FunctionDef)}


def test_every_helper_is_in_the_stub_with_its_parameters():
    classes = {node.name: node for node in stub().body if isinstance(node, ast.ClassDef)}
    for feature, helpers in _helpers.HELPERS.items():
        runtime = {name for name in vars(vektuner.FEATURES[feature]) if not name.startswith("_")}
        assert members(classes[feature]) == runtime == {h.name for h in helpers}
        for node in classes[feature].body:
            if isinstance(node, ast.FunctionDef) and not node.decorator_list:
                method = getattr(vektuner.FEATURES[feature], node.name)
                wanted = list(inspect.signature(method).parameters)
                args = node.args
                given = [a.arg for a in args.posonlyargs + args.args + [args.vararg] +
                         args.kwonlyargs if a is not None]
                assert given == wanted, f"{feature}.{node.name}"


def test_the_stub_covers_the_public_names():
    names = {node.name for node in stub().body if isinstance(node, (ast.ClassDef, ast.FunctionDef))}
    names |= {t.id for node in stub().body if isinstance(node, ast.AnnAssign)
              for t in [node.target]}
    link = next(node for node in stub().body if isinstance(node, ast.ClassDef) and node.name == "Link")
    attributes = {node.target.id for node in link.body if isinstance(node, ast.AnnAssign)}
    assert set(vektuner.__all__) - names == set()
    assert {feature.lower() for feature in vektuner.FEATURES} <= attributes
    public = {name for name in vars(vektuner.Link) if not name.startswith("_")}
    assert public <= members(link)
