#include "shell/ViewController.h"
