#!/usr/bin/python3
"""orders.py PORT SOAP: an interface like that of orders.wsdl, with a description of its own; SOAP is 11 or 12."""
import logging
import sys
from decimal import Decimal as Number
from wsgiref.simple_server import WSGIRequestHandler, make_server

from spyne import (Application, Array, Boolean, ByteArray, ComplexModel, Decimal, Double, Fault, Integer32, Iterable, Mandatory,
                   ServiceBase, Unicode, rpc)
from spyne.protocol.soap import Soap11, Soap12
from spyne.server.wsgi import WsgiApplication

SPACE = "urn:orders"
logging.disable(logging.CRITICAL)


class Item(ComplexModel):
    __namespace__ = SPACE
    sku = Unicode
    price = Decimal
    count = Integer32
    note = Unicode


class Receipt(ComplexModel):
    __namespace__ = SPACE
    total = Double
    skus = Unicode
    count = Integer32
    gift = Boolean


class Session(ComplexModel):
    __namespace__ = SPACE
    name = Unicode


class Orders(ServiceBase):
    __in_header__ = Session
    __out_header__ = Session

    @rpc(Array(Item), Boolean, _returns=Receipt)
    def place(ctx, items, gift):
        if ctx.in_header is not None:
            ctx.out_header = Session(name=ctx.in_header.name + "!")
        total = sum((item.price * item.count for item in items), Number(0))
        skus = " ".join(item.sku + ("" if item.note is None else "*") for item in items)
        return Receipt(total=float(total), skus=skus, count=len(items), gift=gift)

    @rpc(ByteArray, _returns=ByteArray)
    def echo(ctx, bytes):
        return bytes

    @rpc(Unicode, _returns=Unicode)
    def refuse(ctx, reason):
        raise Fault("Client.Order", reason, detail={"left": "7"})


class Quiet(WSGIRequestHandler):
    def log_message(self, *arguments):
        pass


soap = Soap12 if sys.argv[2] == "12" else Soap11
application = Application([Orders], SPACE, in_protocol=soap(validator="lxml"), out_protocol=soap())
make_server("127.0.0.1", int(sys.argv[1]), WsgiApplication(application), handler_class=Quiet).serve_forever()
