"""An installation of a build in a folder of its own, and the programs of it under Wine."""
import pathlib
import shutil
import subprocess

SCRIPTS = pathlib.Path(__file__).resolve().parent


def environment():
    """Brings Wine up; its program, and the variables that it needs."""
    subprocess.run([SCRIPTS / "wine-up.sh"], check=True)
    said = subprocess.run(["bash", "-c", f'. "{SCRIPTS}/wine-env.sh"; echo "$wine64"; env -0'], check=True,
                          capture_output=True).stdout
    wine, _, variables = said.partition(b"\n")
    return wine, dict(each.split(b"=", 1) for each in variables.split(b"\0") if b"=" in each)


def was_not_started(code, *said):
    """A program that ends with code 1 and has said nothing: ours say why they fail. The emulation fails to start one now
    and then, while it starts others."""
    return code == 1 and not any(said)


def install(build, folder):
    """What is delivered, anew; the folder of its programs."""
    shutil.rmtree(folder, ignore_errors=True)
    subprocess.run(["cmake", "--install", build, "--prefix", folder], check=True, stdout=subprocess.DEVNULL)
    return folder / "bin"
