#!/usr/bin/python3
"""Lets LibreOffice save a workbook that is encrypted with the default password. Run it in tests/data.

Needs python3-uno and a LibreOffice that listens:
soffice --headless --norestore "--accept=socket,host=localhost,port=2099;urp;"
"""
import os

import uno
from com.sun.star.beans import PropertyValue


def properties(**values):
    return tuple(PropertyValue(Name=name, Value=value) for name, value in values.items())


def url(name):
    return uno.systemPathToFileUrl(os.path.abspath(name))


context = uno.getComponentContext()
resolver = context.ServiceManager.createInstance("com.sun.star.bridge.UnoUrlResolver")
office = resolver.resolve("uno:socket,host=localhost,port=2099;urp;StarOffice.ComponentContext")
desktop = office.ServiceManager.createInstance("com.sun.star.frame.Desktop")
book = desktop.loadComponentFromURL(url("make/results.fods"), "_blank", 0, properties(Hidden=True))
book.storeToURL(
    url("libreoffice-rc4.xls"),
    properties(FilterName="MS Excel 97", Password="VelvetSweatshop"),
)
book.close(True)
