"""What the operations of a service take and give: service_report.py FILE-OR-ADDRESS"""

import sys

import ztbaseclient as zt


def main(location: str) -> None:
    service = zt.load_service(location)
    for port in service.ports:
        print(port.name, port.address)
        for operation in port.operations:
            parts = [part.name for part in operation.input.parts] if operation.input else []
            print(f"  {operation.name}({', '.join(parts)})")
    for type_ in service.types:
        if type_.members:
            print(type_.name, [member.name.local for member in type_.members if member.name])
    for warning in service.warnings:
        print(warning, file=sys.stderr)


if __name__ == "__main__":
    main(sys.argv[1])
