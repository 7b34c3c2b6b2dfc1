// The status line as people write it with Node, for comparison.
const { rate_limits: limits } = JSON.parse(require("node:fs").readFileSync(0, "utf8"));
const left = (window) => Math.floor(100 - window.used_percentage);
console.log(`주간 ${left(limits.seven_day)}% 남음 · 5시간 ${left(limits.five_hour)}% 남음`);
