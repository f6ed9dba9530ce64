"""The exceptions of qvimanager.

A refusal of the library raises the class that mirrors its branch of the
library's exception tree::

    QVIError                 every refusal of the library (class Exception)
    +- ResourceError         ExceptionResource: null pointers, indices out
    |                        of bound, plug-ins, the naming service, ...
    +- BusinessError         ExceptionBusiness: wrong types, calculation
    |  |                     problems
    |  +- CMetryError        ExceptionCMetry: the colour engine (unknown
    |                        condition keys and values, unsupported colour
    |                        spaces and formulas, failed calculations)
    +- GUIError              ExceptionGUI
    CgatsError               a measurement file that cannot be read (also a
                             ValueError)

Each refusal carries the library's own text in ``text``, the library's class
name in ``exception_class`` (e.g. "ExceptionCMetry") and the row of the batch
in ``row`` (None when the call failed before its first row). The message,
``str(error)``, is the text with the row or the condition in front and, where
there is one, what to give instead after it.

Bad input that never reaches the library (a wrong shape, a NaN or infinite
value, a result beyond the float range) raises ValueError; a wrong type
raises TypeError.
"""


class QVIError(Exception):
    """A refusal of the library."""

    def __init__(self, message, text=None, exception_class=None, row=None):
        super().__init__(message)
        self.text = message if text is None else text
        self.exception_class = exception_class
        self.row = row


class ResourceError(QVIError):
    """A refusal of the library's resource branch (ExceptionResource)."""


class BusinessError(QVIError):
    """A refusal of the library's business branch (ExceptionBusiness)."""


class CMetryError(BusinessError):
    """A refusal of the colour engine (ExceptionCMetry)."""


class GUIError(QVIError):
    """A refusal of the library's user-interface branch (ExceptionGUI)."""


class CgatsError(QVIError, ValueError):
    """A measurement file that cannot be read: ``file``, ``line`` (None when
    the failure concerns the whole file) and ``text``, the message without
    them."""

    def __init__(self, message, file=None, line=None, text=None):
        super().__init__(message, text=text)
        self.file = file
        self.line = line


__all__ = ["QVIError", "ResourceError", "BusinessError", "CMetryError", "GUIError", "CgatsError"]
