"""Where the models lie: those that the package carries, unpacked once, or a directory of the user's."""

from __future__ import annotations

import hashlib
import http.client
import lzma
import os
import pathlib
import shutil
import tempfile
import threading
import urllib.request
from typing import Callable, Dict, Iterator, List, NamedTuple, Optional, Tuple, Union

from . import _native, _pictures
from .errors import ModelsError

CARRIED = pathlib.Path(__file__).parent / "_models"

_lock = threading.Lock()
_directory: Optional[str] = None


class Model(NamedTuple):
    """A line of the catalogue."""

    short: str
    public: str
    digests: Tuple[Tuple[str, str], ...]
    """Algorithm and hexadecimal digest of the published file; ``blob`` is as git names files."""
    url: str


def use_models(directory: Union[str, "os.PathLike[str]"]) -> None:
    """Has the models loaded from a directory that holds all seven under their short names (model01.prototxt
    and so on), rather than from those that the package carries.

    Called before the first photograph: detectors that are loaded stay. The variable QOROCV460_MODELS in the
    environment does the same for the whole process. Raises ModelsError where a model cannot be opened or
    another directory is in use already.
    """
    with _lock:
        _use(os.path.abspath(os.fspath(directory)))


def ready() -> None:
    """Has models in place: those of use_models, of QOROCV460_MODELS, or the package's own."""
    if _directory is not None:
        return
    with _lock:
        if _directory is None:
            _use(os.path.abspath(os.environ.get("QOROCV460_MODELS") or unpacked()))


def in_use() -> Optional[str]:
    """The directory that models are loaded from, once one has been chosen."""
    return _directory


def _use(directory: str) -> None:
    global _directory
    if directory == _directory:
        return
    if _directory is not None:
        raise ModelsError(f"models of {_directory} are in use, and cannot be changed for those of {directory}")
    try:
        missing = _place(directory)
    except _native.CallFailed as failure:
        raise ModelsError(f"{directory}: {failure}") from None
    if missing:
        raise ModelsError(f"{directory} lacks {', '.join(missing)}", missing)
    _directory = directory


def _place(directory: str) -> Tuple[str, ...]:
    """Has the library look for models there, and names those that it cannot open."""
    encoded = _pictures.encoded_path(directory)
    missing = tuple(_native.set_models(encoded))
    # The user's locale may lack letters of the name, which a descriptor does without. It stays open where it
    # led to the models: they are read when a photograph needs them.
    descriptor = _pictures.descriptor_of(directory) if missing and not encoded.isascii() else None
    if descriptor is not None:
        missing = tuple(_native.set_models(_pictures.path_of_descriptor(descriptor)))
        if missing:
            os.close(descriptor)
    return missing


def catalogue() -> List[Model]:
    """The seven models, and where they are published."""
    models = []
    for line in (CARRIED / "models.txt").read_text(encoding="ascii").splitlines():
        if line and not line.startswith("#"):
            short, public, digests, url = line.split()
            pairs = (digest.partition(":") for digest in digests.split(","))
            models.append(Model(short, public, tuple((pair[0], pair[2]) for pair in pairs), url))
    return models


# --- The models that the package carries ---------------------------------------------------------------


def cache_directory() -> pathlib.Path:
    """Where the user's programs keep what they can make again."""
    if os.name == "nt":
        local = os.environ.get("LOCALAPPDATA")
        return pathlib.Path(local) / "qorocv460" if local else pathlib.Path.home() / "AppData" / "Local" / "qorocv460"
    cache = os.environ.get("XDG_CACHE_HOME")
    return (pathlib.Path(cache) if cache and os.path.isabs(cache) else pathlib.Path.home() / ".cache") / "qorocv460"


def unpacked() -> str:
    """The directory of the package's own models, unpacked where it is not there yet."""
    sums_file = CARRIED / "SHA256SUMS"
    if not sums_file.is_file():
        raise ModelsError("this installation carries no models: name a directory with QOROCV460_MODELS or use_models")
    sums = _sums(sums_file)
    # Named after what it holds: other models, of another release, lie beside it.
    goal = cache_directory() / f"models-{hashlib.sha256(sums_file.read_bytes()).hexdigest()[:16]}"
    if not _is_whole(goal):
        try:
            _unpack_into(goal, sums)
        except OSError as error:
            raise ModelsError(
                f"the models cannot be unpacked into {goal}: {error}; set XDG_CACHE_HOME to a directory "
                "that can be written, or QOROCV460_MODELS to one with models"
            ) from error
    return str(goal)


def _sums(file: pathlib.Path) -> Dict[str, str]:
    return {name: digest for digest, name in (line.split() for line in file.read_text(encoding="ascii").splitlines())}


def _is_whole(directory: pathlib.Path) -> bool:
    """Whether nothing has been lost since it was put in place, as a cleaner of temporary files may do."""
    try:
        for line in (directory / "sizes").read_text(encoding="ascii").splitlines():
            size, name = line.split()
            if (directory / name).stat().st_size != int(size):
                return False
    except (OSError, ValueError):
        return False
    return True


def _unpack_into(goal: pathlib.Path, sums: Dict[str, str]) -> None:
    goal.parent.mkdir(parents=True, exist_ok=True)
    scratch = pathlib.Path(tempfile.mkdtemp(prefix=".unpacking-", dir=goal.parent))
    try:
        sizes = []
        for model in catalogue():
            size = _unpack(model.public, scratch / model.short, sums[model.public])
            sizes.append(f"{size} {model.short}\n")
        (scratch / "sizes").write_text("".join(sizes), encoding="ascii")
        os.chmod(scratch, 0o755)
        _put_in_place(scratch, goal)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


def _put_in_place(scratch: pathlib.Path, goal: pathlib.Path) -> None:
    """Renaming is one step: of processes that unpack at once, the first one's directory stays."""
    for _ in range(10):
        try:
            os.rename(scratch, goal)
            return
        except OSError:
            if _is_whole(goal):
                return
            # What is there is damaged. Whoever moves it away is the only one to remove it.
            damaged = tempfile.mkdtemp(prefix=".damaged-", dir=goal.parent)
            try:
                os.rename(goal, os.path.join(damaged, "models"))
            except OSError:
                pass
            shutil.rmtree(damaged, ignore_errors=True)
    os.rename(scratch, goal)


def _unpack(public: str, goal: pathlib.Path, digest: str) -> int:
    packed = CARRIED / (public + ".xz")
    actual = hashlib.sha256()
    size = 0
    try:
        with lzma.open(packed) as source, open(goal, "wb") as unpacked_file:
            for block in iter(lambda: source.read(1 << 20), b""):
                actual.update(block)
                size += unpacked_file.write(block)
    except (lzma.LZMAError, EOFError) as error:
        raise ModelsError(f"{packed} is damaged: {error}") from error
    if actual.hexdigest() != digest:
        raise ModelsError(f"{packed} is damaged: it does not hold the {public} of this release")
    return size


# --- The published models ------------------------------------------------------------------------------


def fetch(
    directory: Union[str, "os.PathLike[str]"],
    models: Optional[List[Model]] = None,
    say: Callable[[str], None] = lambda message: None,
) -> None:
    """Fills a directory with the published models under their short names, each checked before it gets its
    name. One that is there and right stays; another file under such a name is the user's: it stays, and
    ModelsError says so before anything is fetched. Raises ModelsError also for what cannot be fetched."""
    goal = pathlib.Path(directory)
    wanted = []
    for model in catalogue() if models is None else models:
        if not (goal / model.short).exists():
            wanted.append(model)
        elif not _matches(goal / model.short, model):
            raise ModelsError(f"{goal / model.short} is not the published {model.public}, and stays: move it away first")
    goal.mkdir(parents=True, exist_ok=True)
    scratch = pathlib.Path(tempfile.mkdtemp(prefix=".fetching-", dir=goal))
    try:
        for model in wanted:
            say(f"fetching {model.public}")
            _fetch(model, scratch / model.short)
        for model in wanted:
            os.replace(scratch / model.short, goal / model.short)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


def _fetch(model: Model, goal: pathlib.Path) -> None:
    try:
        with urllib.request.urlopen(model.url, timeout=30) as answer, open(goal, "wb") as file:
            shutil.copyfileobj(answer, file)
    except (OSError, http.client.HTTPException) as error:
        raise ModelsError(f"{model.public} cannot be fetched from {model.url}: {error}") from error
    if not _matches(goal, model):
        raise ModelsError(f"what {model.url} gives is not the published {model.public}")


def _matches(file: pathlib.Path, model: Model) -> bool:
    return all(_digest(algorithm, file) == digest for algorithm, digest in model.digests)


def _digest(algorithm: str, file: pathlib.Path) -> str:
    if algorithm == "blob":
        # As git names a file: the digest of its length and its bytes.
        digest = hashlib.sha1(b"blob %d\0" % file.stat().st_size)
    else:
        digest = hashlib.new(algorithm)
    for block in _blocks(file):
        digest.update(block)
    return digest.hexdigest()


def _blocks(file: pathlib.Path) -> Iterator[bytes]:
    with open(file, "rb") as content:
        yield from iter(lambda: content.read(1 << 20), b"")
