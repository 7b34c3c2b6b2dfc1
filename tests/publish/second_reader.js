// Opens a payload as a phone does, with nothing of the program: the key as hexadecimal digits in the
// first argument, the payload as such in the second. Prints the names of both records and the
// figures that it read.
'use strict';
const crypto = require('crypto');

const key = Buffer.from(process.argv[2], 'hex');
const payload = Buffer.from(process.argv[3], 'hex');

const decipher = crypto.createDecipheriv('aes-256-gcm', key, payload.subarray(0, 12));
decipher.setAuthTag(payload.subarray(payload.length - 16));
const text = Buffer.concat([decipher.update(payload.subarray(12, payload.length - 16)), decipher.final()]);
const document = JSON.parse(text.toString('utf8'));

const name = (prefix, message) => prefix + crypto.createHmac('sha256', key).update(message).digest('hex');
console.log(name('ls-', 'limits-v1'));
console.log(name('lp-', 'phone-limits-v1'));
console.log(document.version);
for (const [mac, share] of Object.entries(document.macs)) {
    console.log(mac, share.sentAt);
    for (const account of share.limits) {
        console.log(account.provider, account.account, account.displayName, account.sevenDay.usedPercentage,
            account.sevenDay.resetsAt, account.updatedAt, account.recentUsageHistory.length,
            account.recentUsageHistory[0].fiveHourReset);
    }
}
