"""A throw-away authority for tests that need TLS."""
import subprocess


def openssl(*mots, dossier):
    subprocess.run(["openssl", *mots], cwd=dossier, check=True, capture_output=True)


def fabriquer(dossier):
    """Makes ca.pem, and signs NAME.pem with NAME.key for this machine (localhost) and for another one."""
    openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2",
            "-subj", "/CN=Autorite d'essai", "-keyout", "ca.key", "-out", "ca.pem", dossier=dossier)
    for nom, autres in (("localhost", "DNS:localhost,IP:127.0.0.1"),
                        ("ailleurs.example", "DNS:ailleurs.example"), ("perime", "DNS:localhost")):
        openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj", f"/CN={nom}",
                "-keyout", f"{nom}.key", "-out", f"{nom}.csr", dossier=dossier)
        (dossier / "ext").write_text(f"subjectAltName={autres}\n")
        # A life of no day is over at once; OpenSSL 3.5 refuses one that is negative.
        openssl("x509", "-req", "-in", f"{nom}.csr", "-CA", "ca.pem", "-CAkey", "ca.key", "-CAcreateserial",
                "-days", "0" if nom == "perime" else "2", "-extfile", "ext", "-out", f"{nom}.pem", dossier=dossier)
