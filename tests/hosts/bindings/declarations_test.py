"""declarations_test.py LANGUAGE BINDING SAFE.H HEADER_VALUES...

The declarations of a binding (csharp or pascal) are those of safe.h: every function, every parameter in its order, by
name and type; and its constants are the numbers that the command HEADER_VALUES prints. Prints what differs.
"""

from __future__ import annotations

import re
import subprocess
import sys
from pathlib import Path

Parameter = tuple[str, str]  # type, name
Functions = dict[str, tuple[str, list[Parameter]]]  # by name: what it returns, its parameters

# How each language writes a type of the header. A pointer to one int is a variable that the call sets.
TYPES: dict[str, dict[str, set[str]]] = {
    "csharp": {
        "int": {"int"},
        "const char*": {"byte[]", "IntPtr"},
        "double*": {"double[]"},
        "int*": {"out int", "ref int"},
        "bool": {"[MarshalAs(UnmanagedType.I1)] bool"},
        "void*": {"IntPtr"},
        "intptr_t": {"IntPtr"},
        "unsigned char*": {"byte[]"},
    },
    "pascal": {
        "int": {"Integer"},
        "const char*": {"PAnsiChar"},
        "double*": {"PDouble"},
        "int*": {"var Integer"},
        "bool": {"ByteBool"},
        "void*": {"Pointer"},
        "intptr_t": {"NativeInt"},
        "unsigned char*": {"PByte"},
    },
}


def of_header(text: str) -> Functions:
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
    functions: Functions = {}
    for returned, name, inside in re.findall(
        r"^QOROCV460_SAFE_API\s+(int|const char\*)\s+(\w+)\(([^)]*)\);", text, flags=re.MULTILINE
    ):
        parameters: list[Parameter] = []
        for parameter in inside.split(","):
            words = parameter.split()
            if words != ["void"]:
                parameters.append((" ".join(words[:-1]), words[-1]))
        functions[name] = (returned, parameters)
    return functions


def of_csharp(text: str) -> Functions:
    functions: Functions = {}
    for returned, name, inside in re.findall(
        r"\[DllImport\(Library, CallingConvention = C\)\]\s+internal static extern (\w+) (\w+)\(([^;]*)\);", text
    ):
        parameters: list[Parameter] = []
        for parameter in inside.split(",") if inside.strip() else []:
            words = parameter.split()
            parameters.append((" ".join(words[:-1]), words[-1]))
        functions[name] = (returned, parameters)
    return functions


def of_pascal(text: str) -> Functions:
    functions: Functions = {}
    for name, inside, returned in re.findall(
        r"function (\w+)(?:\(([^)]*)\))?:\s*(\w+);\s*cdecl;\s*external\s+SafeLibrary;", text
    ):
        parameters: list[Parameter] = []
        for group in inside.split(";") if inside else []:
            names, kind = group.split(":")
            by_reference = names.split()[0] == "var"
            for parameter in re.sub(r"^\s*var ", "", names).split(","):
                parameters.append((("var " if by_reference else "") + kind.strip(), parameter.strip()))
        functions[name] = (returned, parameters)
    return functions


def differences(header: Functions, binding: Functions, types: dict[str, set[str]]) -> list[str]:
    found = [f"not declared: {name}" for name in header.keys() - binding.keys()]
    found += [f"not in the header: {name}" for name in binding.keys() - header.keys()]
    for name in header.keys() & binding.keys():
        returned, parameters = header[name]
        binding_returned, binding_parameters = binding[name]
        if binding_returned not in types[returned]:
            found.append(f"{name} returns {binding_returned}, not {returned}")
        if len(parameters) != len(binding_parameters):
            found.append(f"{name} takes {len(binding_parameters)} parameters, not {len(parameters)}")
            continue
        for (kind, word), (binding_kind, binding_word) in zip(parameters, binding_parameters):
            if binding_kind not in types[kind] or binding_word.lower() != word.lower():
                found.append(f"{name}: {binding_kind} {binding_word}, not {kind} {word}")
    return found


def constant_name(name: str) -> str:
    return "".join(word.capitalize() for word in name.removeprefix("QOROCV460_").lower().split("_"))


def wrong_constants(text: str, values: str) -> list[str]:
    wrong = []
    for line in values.splitlines():
        name, value = line.split(" = ")
        constant = constant_name(name)
        if not re.search(rf"^ +(public const int )?{constant} = {value};", text, flags=re.MULTILINE):
            wrong.append(f"no {constant} = {value}")
    return wrong


def main() -> int:
    language, binding, safe_header, *command = sys.argv[1:]
    text = Path(binding).read_text(encoding="utf-8")
    header = of_header(Path(safe_header).read_text(encoding="utf-8"))
    declared = {"csharp": of_csharp, "pascal": of_pascal}[language](text)
    values = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    problems = differences(header, declared, TYPES[language]) + wrong_constants(text, values)
    if len(header) != 22:
        problems.append(f"the header declares {len(header)} functions, not 22")
    print("\n".join(problems) or f"{len(declared)} functions declared as in the header")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
