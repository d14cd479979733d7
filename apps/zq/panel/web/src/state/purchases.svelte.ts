// The purchases that the program tells of, by repository, the latest first.
import * as api from '../api/client.ts';
import type { Purchase } from '../api/types.ts';
import { basket } from './basket.svelte.ts';
import { attempt } from './failure.ts';
import { repositories } from './repositories.svelte.ts';

class PurchasesState {
  all = $state.raw<Record<string, Purchase[]>>({});

  of(repository: string): Purchase[] {
    return this.all[repository] ?? [];
  }

  async load(repository: string): Promise<void> {
    const answer = await attempt(() => api.getPurchases(repository));
    if (answer !== undefined) {
      this.all = { ...this.all, [repository]: answer.purchases };
    }
  }

  take(repository: string, purchase: Purchase): void {
    const list = this.of(repository);
    const known = list.find((other) => other.key === purchase.key);
    const next = known !== undefined
      ? list.map((other) => (other.key === purchase.key ? purchase : other))
      : [purchase, ...list];
    this.all = { ...this.all, [repository]: next };
    // What can be bought, and its total, are other ones now.
    if (known?.state !== purchase.state && repository === repositories.shortName) {
      void basket.load();
    }
  }
}

export const purchases = new PurchasesState();
