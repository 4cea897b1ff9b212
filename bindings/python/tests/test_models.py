"""Where the models come from. Most of it takes a process in which nothing is loaded yet."""

from __future__ import annotations

import hashlib
import os
import pathlib
import shutil
import subprocess
import sys
from typing import List

import pytest

import qorocv460
from qorocv460 import _models
from qorocv460.__main__ import main

from conftest import Run

FIND = "import qorocv460, sys; print(qorocv460.find(sys.argv[1]).found)"
UNPACK = "from qorocv460 import _models; print(_models.unpacked())"
NAMES = [
    "model01.prototxt", "model02.caffemodel", "model03.pbtxt", "model04.pb", "model05.yaml", "model06.xml",
    "model07.onnx",
]  # fmt: skip


@pytest.fixture
def unpacked() -> pathlib.Path:
    return pathlib.Path(_models.unpacked())


def test_the_packages_own_models_have_the_embedded_digests(unpacked: pathlib.Path) -> None:
    digests = {model.public: hashlib.sha256((unpacked / model.short).read_bytes()).hexdigest() for model in _models.catalogue()}
    assert digests == _models._sums(_models.CARRIED / "SHA256SUMS")
    assert sorted(path.name for path in unpacked.iterdir()) == [*NAMES, "sizes"]


def test_processes_that_unpack_at_once_share_one_directory(tmp_path: pathlib.Path) -> None:
    environment = {**os.environ, "XDG_CACHE_HOME": str(tmp_path)}
    processes = [
        subprocess.Popen([sys.executable, "-c", UNPACK], env=environment, stdout=subprocess.PIPE, text=True)
        for _ in range(3)
    ]
    said = {process.communicate()[0].strip() for process in processes}
    assert [process.returncode for process in processes] == [0, 0, 0]
    assert len(said) == 1 and _models._is_whole(pathlib.Path(said.pop()))
    assert len(list((tmp_path / "qorocv460").iterdir())) == 1


def test_what_was_lost_from_the_cache_comes_back(tmp_path: pathlib.Path, unpacked: pathlib.Path, fresh: Run) -> None:
    copy = tmp_path / "qorocv460" / unpacked.name
    shutil.copytree(unpacked, copy)
    (copy / "model05.yaml").write_bytes(b"")
    assert fresh(UNPACK, XDG_CACHE_HOME=str(tmp_path)).stdout.strip() == str(copy)
    assert (copy / "model05.yaml").stat().st_size == (unpacked / "model05.yaml").stat().st_size
    assert [path.name for path in copy.parent.iterdir()] == [copy.name]


def test_a_cache_that_cannot_be_written_is_said_so(tmp_path: pathlib.Path, astronaut: str, fresh: Run) -> None:
    (tmp_path / "qorocv460").write_text("no directory")
    done = fresh(FIND, astronaut, XDG_CACHE_HOME=str(tmp_path))
    assert done.returncode == 1 and "ModelsError: the models cannot be unpacked into" in done.stderr
    assert "QOROCV460_MODELS" in done.stderr


@pytest.mark.skipif(os.name != "posix", reason="paths are bytes on POSIX alone")
def test_a_directory_may_have_any_name_in_any_locale(
    tmp_path: pathlib.Path, unpacked: pathlib.Path, astronaut: str, fresh: Run
) -> None:
    for name in ("дом", os.fsdecode(b"\xe9")):
        (tmp_path / name).symlink_to(unpacked)
        done = fresh(FIND, astronaut, LC_ALL="C", QOROCV460_MODELS=str(tmp_path / name))
        assert done.stdout.strip() == "1", done.stderr


def test_missing_models_in_a_directory_of_any_name_are_named(tmp_path: pathlib.Path, fresh: Run) -> None:
    (tmp_path / "дом").mkdir()
    done = fresh("import qorocv460, sys; qorocv460.use_models(sys.argv[1])", str(tmp_path / "дом"), LC_ALL="C")
    assert f"{tmp_path / 'дом'} lacks model01.prototxt" in done.stderr


def test_missing_models_are_named(tmp_path: pathlib.Path, unpacked: pathlib.Path, fresh: Run) -> None:
    for name in NAMES[:4] + NAMES[5:]:
        (tmp_path / name).symlink_to(unpacked / name)
    with_use = "import qorocv460, sys; qorocv460.use_models(sys.argv[1])"
    for done in (fresh(with_use, str(tmp_path)), fresh(FIND, "a.jpg", QOROCV460_MODELS=str(tmp_path))):
        assert done.returncode == 1 and f"ModelsError: {tmp_path} lacks model05.yaml (lbfmodel.yaml)" in done.stderr


def test_after_missing_models_others_can_be_used(unpacked: pathlib.Path, astronaut: str, fresh: Run) -> None:
    code = """
import qorocv460, sys
try:
    qorocv460.use_models("/nowhere")
except qorocv460.ModelsError as error:
    print(len(error.missing))
qorocv460.use_models(sys.argv[1])
print(qorocv460.find(sys.argv[2]).found)
"""
    assert fresh(code, str(unpacked), astronaut).stdout == "7\n1\n"


def test_wrong_models_are_an_error_of_the_photograph(tmp_path: pathlib.Path, astronaut: str, fresh: Run) -> None:
    for name in NAMES:
        (tmp_path / name).write_text("no model")
    code = """
import qorocv460, sys
for detector in ("ssd", "haar"):
    try:
        qorocv460.find(sys.argv[1], detector=detector)
    except qorocv460.DetectionError as error:
        print(error.photo, bool(error.reason))
"""
    done = fresh(code, astronaut, QOROCV460_MODELS=str(tmp_path))
    assert done.returncode == 0 and done.stdout == f"{astronaut} True\n" * 2, done.stderr


def test_models_in_use_are_not_changed(tmp_path: pathlib.Path, astronaut: str) -> None:
    qorocv460.find(astronaut)
    with pytest.raises(qorocv460.ModelsError, match="are in use"):
        qorocv460.use_models(tmp_path)
    used = _models.in_use()
    assert used is not None
    qorocv460.use_models(used)


def test_a_damaged_package_is_said_so(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    carried = tmp_path / "carried"
    shutil.copytree(_models.CARRIED, carried)
    packed = carried / "deploy.prototxt.xz"
    packed.write_bytes(packed.read_bytes()[:-40])
    monkeypatch.setattr(_models, "CARRIED", carried)
    monkeypatch.setenv("XDG_CACHE_HOME", str(tmp_path / "cache"))
    with pytest.raises(qorocv460.ModelsError, match="deploy.prototxt.xz is damaged"):
        _models.unpacked()
    assert list((tmp_path / "cache" / "qorocv460").iterdir()) == []


# --- The published models, from files in their place: tests take no network ------------------------------


def published(directory: pathlib.Path) -> List[_models.Model]:
    """Two models and where they are published."""
    models = []
    for short, content in (("model01.prototxt", b"one"), ("model05.yaml", b"five")):
        file = directory / f"published-{short}"
        file.write_bytes(content)
        digests = (
            ("sha256", hashlib.sha256(content).hexdigest()),
            ("blob", hashlib.sha1(b"blob %d\0" % len(content) + content).hexdigest()),
        )
        models.append(_models.Model(short, f"public {short}", digests, file.as_uri()))
    return models


def test_published_models_are_fetched_under_their_short_names(tmp_path: pathlib.Path) -> None:
    said: List[str] = []
    _models.fetch(tmp_path / "models", published(tmp_path), said.append)
    assert {path.name: path.read_bytes() for path in (tmp_path / "models").iterdir()} == {
        "model01.prototxt": b"one",
        "model05.yaml": b"five",
    }
    assert said == ["fetching public model01.prototxt", "fetching public model05.yaml"]


def test_what_is_there_is_not_fetched_again(tmp_path: pathlib.Path) -> None:
    models = published(tmp_path)
    _models.fetch(tmp_path / "models", models)
    (tmp_path / "published-model05.yaml").unlink()
    _models.fetch(tmp_path / "models", models)


def test_a_file_of_the_users_stays(tmp_path: pathlib.Path) -> None:
    own = tmp_path / "models" / "model05.yaml"
    own.parent.mkdir()
    own.write_text("my own")
    with pytest.raises(qorocv460.ModelsError, match="stays"):
        _models.fetch(own.parent, published(tmp_path))
    assert [path.name for path in own.parent.iterdir()] == ["model05.yaml"] and own.read_text() == "my own"


def test_what_is_not_the_published_file_gets_no_name(tmp_path: pathlib.Path) -> None:
    models = published(tmp_path)
    (tmp_path / "published-model05.yaml").write_text("something else")
    with pytest.raises(qorocv460.ModelsError, match="is not the published public model05.yaml"):
        _models.fetch(tmp_path / "models", models)
    assert list((tmp_path / "models").iterdir()) == []


def test_what_cannot_be_fetched_is_an_error_with_its_address(tmp_path: pathlib.Path) -> None:
    models = published(tmp_path)
    (tmp_path / "published-model01.prototxt").unlink()
    with pytest.raises(qorocv460.ModelsError, match="cannot be fetched from file:"):
        _models.fetch(tmp_path / "models", models)


def test_the_command_fills_a_directory(
    tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch, capsys: pytest.CaptureFixture[str]
) -> None:
    models = published(tmp_path)
    monkeypatch.setattr(_models, "catalogue", lambda: models)
    goal = tmp_path / "models"
    assert main(["models", str(goal)]) == 0
    assert capsys.readouterr().out.endswith(f"{goal} holds the published models\n")
    (goal / "model01.prototxt").write_text("changed")
    assert main(["models", str(goal)]) == 1
    assert "stays" in capsys.readouterr().err


def test_the_catalogue_is_the_repositorys() -> None:
    assert [model.short for model in _models.catalogue()] == NAMES
    assert all(model.url.startswith("https:") and model.digests for model in _models.catalogue())
