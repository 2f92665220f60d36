// SPDX-License-Identifier: Apache-2.0
// Starts the parts of the page; the connection last, since the others listen to it.

import * as cameras from "./cameras.js";
import * as capture from "./capture.js";
import * as field from "./field.js";
import * as histogram from "./histogram.js";
import * as link from "./link.js";
import * as log from "./log.js";
import * as picture from "./picture.js";
import * as properties from "./properties.js";
import * as region from "./region.js";
import * as settings from "./settings.js";
import * as shell from "./shell.js";
import * as statistics from "./statistics.js";

for (const part of [log, shell, cameras, picture, histogram, region, capture, field, properties, statistics, settings, link]) {
    part.start();
}
