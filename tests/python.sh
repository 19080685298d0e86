# Installs the Python wheels as users do and uses them. Sourced by ./test; needs make_wheels.

# install_wheel FOLDER OPTION...: a fresh virtual environment with the wheel. Nothing reaches the network.
install_wheel() {
  rm -rf "$1" && $python -m venv "${@:2}" "$1" &&
    "$1/bin/pip" --isolated install --no-index --no-cache-dir --disable-pip-version-check build/wheels/*-manylinux*.whl
}

# With the standard library alone: the lines of README.md print what they say.
wheel_works_alone() {
  install_wheel build/venv-alone && build/venv-alone/bin/python python/tests/readme.py README.md
}

# With NumPy, pandas, Matplotlib and pytest of the system.
wheel_works() {
  install_wheel build/venv --system-site-packages &&
    build/venv/bin/python -m pytest -q -p no:cacheprovider python/tests
}

# The wheel for Windows, which cannot run here, has the same files, but for the modules; they are those that are tested.
wheels_agree() {
  local linux=build/wheels/linux windows=build/wheels/windows module
  $python -m zipfile -e build/wheels/*-manylinux*.whl $linux &&
    $python -m zipfile -e build/wheels/*-win_amd64.whl $windows &&
    diff -r -x native -x WHEEL -x RECORD $linux $windows || return 1
  for module in qscontainers qshostkit; do
    check_module $windows/qscontainers/native/$module.dll pei-x86-64 || return 1
  done
}

# Its examples print what the C++ hosts print. Needs wheel_works.
python_examples_agree() {
  local run=build/venv/bin/python log=build/log/first-steps-python
  build/native/bin/first_steps build/database $log-native.xml >$log-native.txt &&
    $run examples/first_steps/first_steps.py build/database $log-py.xml | cmp - $log-native.txt &&
    cmp $log-py.xml $log-native.xml &&
    build/native/bin/evaluation build/database | cmp - <($run examples/evaluation/evaluation.py build/database)
}

sweep_example_works() {
  rm -rf build/sweep && build/venv/bin/python examples/sweep/sweep.py build/sweep --temperatures 1000 --workers 2 &&
    [[ $(ls build/sweep | grep -c '^[0-9]*-[A-Z]*\.npy$') == 162 ]]
}

test_python() {
  check "Python wheels" make_wheels wheel windows-x64
  check "Python wheel for Windows" wheels_agree
  check "Python wheel, with nothing else" wheel_works_alone
  check "Python wheel, its tests" wheel_works
  check "sweep on two workers" sweep_example_works
  check "examples in Python, the same as in C++" python_examples_agree
}
