"""The package itself: its version, its documentation, its type stubs."""

import ast
import inspect
import pathlib
import pickle
import pydoc
import re

import kovamapping
from conftest import ROOT

PACKAGE = pathlib.Path(kovamapping.__file__).resolve().parent
STUB = PACKAGE / "__init__.pyi"


def project_version() -> str:
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(KOVAMappingServices\s+VERSION\s+([0-9.]+)", text).group(1)


def public_objects():
    return {name: getattr(kovamapping, name) for name in kovamapping.__all__ if name != "__version__"}


def own_doc(obj) -> str:
    """The text of a docstring without the signature line pybind11 puts first."""
    doc = inspect.getdoc(obj) or ""
    first, _, rest = doc.partition("\n")
    return rest.strip() if re.match(r"^\w+\(.*\)( -> .*)?$", first) else doc.strip()


def test_version_is_the_projects_version():
    assert kovamapping.__version__ == project_version()
    assert re.fullmatch(r"\d+\.\d+\.\d+", kovamapping.__version__)


def test_every_name_of_all_exists():
    assert len(set(kovamapping.__all__)) == len(kovamapping.__all__)
    for name in kovamapping.__all__:
        assert hasattr(kovamapping, name), name


def test_every_public_name_has_its_own_docstring():
    for name, obj in public_objects().items():
        assert len(own_doc(obj)) > 20, name


def test_every_public_method_and_property_of_the_classes_has_a_docstring():
    for cls in (kovamapping.Table, kovamapping.Reference, kovamapping.Instance):
        for name, member in vars(cls).items():
            if name.startswith("_"):
                continue
            assert len(own_doc(member)) > 10, f"{cls.__name__}.{name}"


def test_help_of_the_package_names_its_main_functions():
    text = pydoc.render_doc(kovamapping, renderer=pydoc.plaintext)
    for name in ("read", "to_json", "write", "pack", "unpack", "compute_stamp", "diff", "audit", "find",
                 "add_reference", "Error"):
        assert re.search(rf"\b{name}\b", text), name


def test_py_typed_and_the_stub_are_beside_the_package():
    assert (PACKAGE / "py.typed").is_file()
    assert STUB.is_file()
    ast.parse(STUB.read_text(encoding="utf-8"))


def stub_names() -> dict:
    tree = ast.parse(STUB.read_text(encoding="utf-8"))
    names = {}
    for node in tree.body:
        if isinstance(node, (ast.FunctionDef, ast.ClassDef)):
            names[node.name] = node
        elif isinstance(node, ast.AnnAssign) and isinstance(node.target, ast.Name):
            names[node.target.id] = node
    return names


def test_every_name_of_all_is_in_the_stub():
    names = stub_names()
    for name in kovamapping.__all__:
        assert name in names, name


def test_the_stub_gives_the_python_functions_their_parameters():
    names = stub_names()
    for name in ("compute_stamp", "diff", "audit", "audit_frame"):
        stubbed = [argument.arg for argument in names[name].args.args]
        assert stubbed == list(inspect.signature(getattr(kovamapping, name)).parameters), name


def test_the_stub_gives_the_classes_their_members():
    names = stub_names()
    for cls in (kovamapping.Table, kovamapping.Reference, kovamapping.Instance):
        stubbed = {node.name if isinstance(node, ast.FunctionDef) else node.target.id
                   for node in names[cls.__name__].body if isinstance(node, (ast.FunctionDef, ast.AnnAssign))}
        public = {name for name in vars(cls) if not name.startswith("_")}
        assert public <= stubbed, (cls.__name__, public - stubbed)


def test_error_is_a_value_error_that_travels_with_its_status_and_messages():
    assert issubclass(kovamapping.Error, ValueError)
    error = kovamapping.Error("read: error 0x80004005: a; b", 0x80004005, ["a", "b"])
    copy = pickle.loads(pickle.dumps(error))
    assert (type(copy), str(copy), copy.status, copy.messages) == (kovamapping.Error, str(error), 0x80004005,
                                                                   ["a", "b"])


def test_records_and_changes_pickle():
    record = kovamapping.AuditRecord("x.json", True, 0, [], 12, 1, 0, "R", 0.5)
    change = kovamapping.Change("moved", "instance", "I", "B", {"parent": ("A", "B")})
    assert pickle.loads(pickle.dumps(record)) == record
    assert pickle.loads(pickle.dumps(change)) == change
