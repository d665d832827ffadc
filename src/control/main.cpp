#include "control/Control.h"

int main(int count, char **values) {
    return quorbel::runControl(count, values);
}
