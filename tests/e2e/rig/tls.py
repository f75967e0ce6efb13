"""A certificate that nobody signed but its owner."""

import ssl

from .home import needs


def server_context(home, host):
    path = home.folder / f"{host}.pem"
    if not path.exists():
        needs("openssl")
        home.run("openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                 "-days", "2", "-subj", f"/CN={host}", "-keyout", path, "-out", path)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(path)
    return context
